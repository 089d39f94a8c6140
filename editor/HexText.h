#pragma once

#include "firmware/FwImage.h"

#include <QString>

#include <cstdint>

namespace vornadel
{

/// The descriptor block of an image as text, and which characters of it are to be red.
struct HexText {
    QString text;
    qsizetype redStart = 0;
    qsizetype redLength = 0; ///< 0: nothing is red
};

/// Sixteen lines of sixteen bytes, each line labelled with its offset in the image. The bytes of
/// the block between `begin` and `end` (in either order) are red together with what separates them;
/// `end` is the byte behind the last, so that an end of 256 or more colours to the end of the text.
/// A begin of 256 or more colours nothing. The image must be loaded.
HexText hexText(const FwImage& image, std::uint32_t begin, std::uint32_t end);

} // namespace vornadel
