#include "editor/Tone.h"

#include <algorithm>
#include <cmath>

namespace vornadel
{

namespace
{

/// The minimum contrast for readable small text (4.5 : 1).
constexpr double kReadableContrast = 4.5;

/// Relative luminance of an sRGB colour, 0 to 1.
double luminance(const QColor& color)
{
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
           0.0722 * linear(color.blueF());
}

double contrast(const QColor& a, const QColor& b)
{
    const double la = luminance(a);
    const double lb = luminance(b);
    return (std::max(la, lb) + 0.05) / (std::min(la, lb) + 0.05);
}

} // namespace

QColor toneColor(Tone tone, const QColor& background)
{
    const float hue = tone == Tone::Blue ? 240.0F / 360.0F : 0.0F;
    const float step = luminance(background) < 0.18 ? 0.02F : -0.02F;
    float lightness = 0.5F;
    QColor color = QColor::fromHslF(hue, 1.0F, lightness);
    while (contrast(color, background) < kReadableContrast && lightness > 0.05F &&
           lightness < 0.95F) {
        lightness += step;
        color = QColor::fromHslF(hue, 1.0F, lightness);
    }
    return color;
}

QColor mixedColor(const QColor& first, const QColor& second, float share)
{
    const auto mixed = [share](float a, float b) { return a * (1 - share) + b * share; };
    return QColor::fromRgbF(mixed(first.redF(), second.redF()),
                            mixed(first.greenF(), second.greenF()),
                            mixed(first.blueF(), second.blueF()));
}

} // namespace vornadel
