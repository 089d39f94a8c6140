#include "editor/HexText.h"

#include <algorithm>
#include <optional>

namespace vornadel
{

namespace
{

constexpr std::uint32_t kBlockSize = 256;
constexpr std::uint32_t kBytesInLine = kHexBytesInLine;
constexpr qsizetype kByteWidth = 3; ///< two digits and a blank

} // namespace

HexText hexText(const FwImage& image, std::uint32_t begin, std::uint32_t end)
{
    const std::uint32_t low = std::min(begin, end);
    const std::uint32_t high = std::max(begin, end);
    const auto blockOffset = static_cast<std::uint32_t>(image.descriptor - image.data.get());
    HexText hex;
    std::optional<qsizetype> redStart;
    std::optional<qsizetype> redEnd;
    for (std::uint32_t i = 0; i < kBlockSize; ++i) {
        if (i % kBytesInLine == 0) {
            hex.text += QString::asprintf("%04Xh:", blockOffset + i);
        }
        hex.text += QString::asprintf("%02X ", image.descriptor[i]);
        // Measured in the text, because labels have a fifth digit from offset 0x10000 on.
        const qsizetype firstDigit = hex.text.size() - kByteWidth;
        if (i == low) {
            redStart = firstDigit;
        }
        if (i == high) {
            redEnd = firstDigit;
        }
        if (i % kBytesInLine == kBytesInLine / 2 - 1) {
            hex.text += "- ";
        } else if (i % kBytesInLine == kBytesInLine - 1) {
            hex.text += '\n';
        }
    }
    if (redStart) {
        hex.redStart = *redStart;
        hex.redLength = redEnd.value_or(hex.text.size()) - *redStart;
    }
    return hex;
}

int hexColumn(const QString& line, int byteInLine)
{
    const qsizetype label = line.indexOf(':') + 1;
    const qsizetype dash = byteInLine < kHexBytesInLine / 2 ? 0 : 2;
    const qsizetype column = label + kByteWidth * byteInLine + dash;
    return label > 0 && column + 2 <= line.size() ? static_cast<int>(column) : -1;
}

} // namespace vornadel
