#pragma once

#include <QColor>

namespace vornadel
{

/// The meaning of a text's colour.
enum class Tone { Blue, Red };

/// The colour of a tone on a background: a fixed hue, light or dark enough to be readable there.
QColor toneColor(Tone tone, const QColor& background);

/// A colour between two; `share` is that of the second, 0 to 1.
QColor mixedColor(const QColor& first, const QColor& second, float share);

} // namespace vornadel
