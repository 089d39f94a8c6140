#pragma once

#include "firmware/FwImage.h"

#include <QString>

#include <cstdint>

namespace vornadel
{

/// The descriptor block of an image as text, and which of its characters are red.
struct HexText {
    QString text;
    qsizetype redStart = 0;
    qsizetype redLength = 0; ///< 0: nothing is red
};

inline constexpr int kHexBytesInLine = 16;

/// Sixteen lines of sixteen bytes, each labelled with its offset in the image. The bytes of the
/// block from `begin` up to but not including `end` (in either order) are red, and so are the
/// blanks between them. An end of 256 or more colours to the end of the text; a begin of 256 or
/// more colours nothing. The image must be loaded.
HexText hexText(const FwImage& image, std::uint32_t begin, std::uint32_t end);

/// Where the two digits of a byte of a line begin; -1 if the text is not such a line.
int hexColumn(const QString& line, int byteInLine);

} // namespace vornadel
