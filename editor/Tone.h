#pragma once

#include <QColor>

namespace vornadel
{

/// The meaning of a text's colour.
enum class Tone { Blue, Red };

/// The colour of a tone on a background: a fixed hue, light or dark enough to be readable there.
QColor toneColor(Tone tone, const QColor& background);

} // namespace vornadel
