#include "firmware/ImageCheck.h"

#include <cstdint>

namespace vornadel
{

namespace
{

constexpr int kStringCount = 3;
constexpr std::uint32_t kShortestString = 2;

bool isBlank(const std::uint8_t* id)
{
    const int number = id[0] << 8 | id[1];
    return number == 0x0000 || number == 0xFFFF;
}

/// Whether the string descriptors follow each other up to a length of 0, the third one or the end.
bool stringsFit(const FwImage& image)
{
    std::uint32_t at = 0;
    for (int i = 0; i < kStringCount && at < image.stringsLength && image.strings[at] != 0; ++i) {
        if (image.strings[at] < kShortestString) {
            return false;
        }
        at += image.strings[at];
    }
    return at <= image.stringsLength;
}

} // namespace

ImageFlaw FwImage_FindFlaw(const FwImage& image)
{
    if (image.version == nullptr) {
        return ImageFlaw::NoVersion;
    }
    if (isBlank(image.vid) || isBlank(image.sspid) || isBlank(image.hspid)) {
        return ImageFlaw::NoIds;
    }
    return stringsFit(image) ? ImageFlaw::None : ImageFlaw::BadStrings;
}

} // namespace vornadel
