#pragma once

#include "firmware/FwImage.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace vornadel
{

// What a person types into the identity fields, put into an image. A text counts in bytes, as the
// image's string area does. Change flags are only ever set: the firmware clears them.

/// Bits of the customisation flags (block offset 42) and of the result of FwImage_EditTexts().
inline constexpr std::uint8_t kContainerIdChanged = 0x01;
inline constexpr std::uint8_t kSerialChanged = 0x02;
inline constexpr std::uint8_t kProductChanged = 0x04;
inline constexpr std::uint8_t kManufacturerChanged = 0x08;

/// The bytes of the descriptor block that an edit changes: the first, and the one after the last.
inline constexpr std::uint32_t kIdsBegin = 2;
inline constexpr std::uint32_t kIdsEnd = 8;
inline constexpr std::uint32_t kTextsBegin = 43;
inline constexpr std::uint32_t kTextsEnd = 94;

/// Writes an id of four hex digits as two bytes. A missing character counts as 0; characters after
/// the fourth are ignored. Two digits are joined as high * 16 | low and cut to 8 bits, so letters
/// past "f" have an effect. Writes nothing at a null position.
void FwImage_SetIdText(std::uint8_t* position, std::string_view text);

/// The texts of the identity fields of a page.
struct IdentityTexts {
    std::string vid, sspid, hspid, version;
    std::string manufacturer, product, serial;

    /// Whether the ids and the version have four digits each and the strings fit into an image.
    bool fit() const;
};

/// Writes the three ids and the version, each only if the image has it.
void FwImage_SetIds(FwImage& image, const IdentityTexts& texts);

/// Writes the three ids. If that changed a byte, it sets the id-change flag (block offset 10, bit
/// 0) and returns true. Does nothing if the image is not loaded.
bool FwImage_EditIds(FwImage& image, std::string_view vid, std::string_view sspid,
                     std::string_view hspid);

/// Writes the strings and the Container ID, and stores all four texts in the record's copies, even
/// if the strings are too long and clear the string area. Sets the flag of each copy that changed
/// in any of its 64 bytes, and returns these flags. Does nothing if the image is not loaded.
std::uint8_t FwImage_EditTexts(FwImage& image, std::string_view manufacturer,
                               std::string_view product, std::string_view serial,
                               std::string_view containerId);

} // namespace vornadel
