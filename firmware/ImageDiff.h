#pragma once

#include "firmware/FwImage.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vornadel
{

/// A field of the descriptor block by name, with its text in the bytes of the image.
struct NamedText {
    std::string_view name;
    std::string text;
};

/// The fields of a loaded image: "block" (its offset in hex), "version", the identity fields by
/// their names, and "changed" (the fields whose change flags are set, or "none").
std::vector<NamedText> FwImage_Fields(const FwImage& image);

/// A field that differs.
struct FieldDifference {
    std::string_view name;
    std::string before;
    std::string after;
};

/// The fields in which two images differ; none if one is not loaded.
std::vector<FieldDifference> FwImage_FieldDifferences(const FwImage& before, const FwImage& after);

/// Bits of an image by address: 1 for those that a comparison looks at. Bytes past its end count
/// as 0xFF.
using ComparedBits = std::vector<std::uint8_t>;

/// Takes those bits out that FwImage_FieldDifferences() tells of. Two images with their blocks at
/// different places have no such bits.
void FwImage_OmitFields(ComparedBits& compared, const FwImage& before, const FwImage& after);

/// A range of addresses, and how many bytes in it differ.
struct DifferentRange {
    std::uint32_t begin = 0;
    std::uint32_t end = 0; ///< one past the last
    std::uint32_t bytes = 0;

    bool operator==(const DifferentRange&) const = default;
};

/// Where two images differ. Ranges that are less than 16 bytes apart are joined. What one of them
/// is longer by differs.
std::vector<DifferentRange> differentRanges(std::span<const std::uint8_t> before,
                                            std::span<const std::uint8_t> after,
                                            const ComparedBits& compared);

} // namespace vornadel
