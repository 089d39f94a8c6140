#pragma once

#include <QColor>

namespace vornadel
{

/// What a text says by its colour.
enum class Tone { Blue, Red };

/// The colour of a tone on a background: always the same hue, light or dark enough to be read on
/// it.
QColor toneColor(Tone tone, const QColor& background);

} // namespace vornadel
