#pragma once

#include "firmware/FwImage.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace vornadel
{

// What a person types into the identity fields, put into an image. Texts are UTF-8 and count in
// bytes, as the string area of the image does. Change flags are only ever set: the firmware clears
// them.

/// Bits of the customisation flags (block offset 42), and what FwImage_EditTexts() answers.
inline constexpr std::uint8_t kContainerIdChanged = 0x01;
inline constexpr std::uint8_t kSerialChanged = 0x02;
inline constexpr std::uint8_t kProductChanged = 0x04;
inline constexpr std::uint8_t kManufacturerChanged = 0x08;

/// Where an edit shows in the descriptor block: its first byte and the byte behind its last.
inline constexpr std::uint32_t kIdsBegin = 2;
inline constexpr std::uint32_t kIdsEnd = 8;
inline constexpr std::uint32_t kTextsBegin = 43;
inline constexpr std::uint32_t kTextsEnd = 94;

/// Writes an id of four hex digits as two bytes. A missing character counts as 0, what comes behind
/// the fourth does not count. Two digits are joined as high * 16 | low and cut to 8 bits, so
/// letters past "f" have an effect. Null is no position: nothing is written.
void FwImage_SetIdText(std::uint8_t* position, std::string_view text);

/// What the identity fields of a page say.
struct IdentityTexts {
    std::string vid, sspid, hspid, version;
    std::string manufacturer, product, serial;

    /// Whether the ids and the version have four digits each and the strings have room in an image.
    bool fit() const;
};

/// Writes the three ids and the version; nothing at a position that is not there.
void FwImage_SetIds(FwImage& image, const IdentityTexts& texts);

/// Writes the three ids. True when that changed a byte; the id-change flag (block offset 10, bit 0)
/// is set then. Nothing happens to an image that is not loaded.
bool FwImage_EditIds(FwImage& image, std::string_view vid, std::string_view sspid,
                     std::string_view hspid);

/// Writes the strings and the Container ID and keeps all four texts in the record's copies, also
/// when the strings are too long and wipe the string area. A copy that differs in any of its 64
/// bytes has its flag set; the result are those flags. Nothing happens to an image that is not
/// loaded.
std::uint8_t FwImage_EditTexts(FwImage& image, std::string_view manufacturer,
                               std::string_view product, std::string_view serial,
                               std::string_view containerId);

} // namespace vornadel
