#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace vornadel
{

/// NUL-terminated text of at most 63 characters. What lies behind the NUL is left from earlier
/// texts.
using FwText = std::array<char, 64>;

/// How many bytes the manufacturer, product and serial number may have together.
inline constexpr std::size_t kMostCharacters = 29;
/// How many hex digits a vendor id, product id or firmware version has as text.
inline constexpr std::size_t kIdDigits = 4;

/// A whole firmware image: the content of the hub's SPI flash, with the identity fields of its
/// descriptor block located. The image has no header and no checksum.
///
/// Positions point into `data` and are null when there is nothing to point at; writing through them
/// changes the image that is saved or sent to the hub. The four texts belong to the record. B is
/// the offset of the descriptor block, which always has 256 bytes. Not thread-safe: one owner at a
/// time.
struct FwImage {
    FwImage() = default;
    FwImage(const FwImage&) = delete;
    FwImage& operator=(const FwImage&) = delete;
    ~FwImage() = default;

    bool loaded = false;                  ///< true only after a successful parse
    std::unique_ptr<std::uint8_t[]> data; ///< `size` bytes
    std::uint8_t* descriptor = nullptr;   ///< B
    std::uint8_t* strings = nullptr; ///< B + 43: string descriptors in the order of the texts below
    std::uint8_t* containerId = nullptr; ///< B + 78: raw, in display order
    std::int32_t size = 0;               ///< image length in bytes
    std::uint32_t stringsLength = 0;     ///< 35 once a block is found
    std::uint32_t containerIdLength = 0; ///< 16 once a block is found
    std::uint8_t* vid = nullptr;         ///< B + 2: vendor id, high byte first
    std::uint8_t* sspid = nullptr;       ///< B + 4: SuperSpeed product id, high byte first
    std::uint8_t* hspid = nullptr;       ///< B + 6: high-speed product id, high byte first
    std::uint8_t* version = nullptr; ///< B - 7: firmware version, high byte first; null when B is
                                     ///< below 7
    FwText manufacturer{};
    FwText product{};
    FwText serial{};
    FwText containerIdText{}; ///< "{00112233-4455-6677-8899-aabbccddeeff}", or the text last set
};

/// Reads a whole file and parses it. False with LastError 6 and the record as it was when there is
/// no such regular file, it cannot be read, is empty, is longer than an int32 can say, shrinks
/// while it is read or does not fit in memory. Pipes and devices are not touched, so nothing
/// blocks. Otherwise the result is FwImage_Parse()'s.
bool FwImage_LoadFile(FwImage& image, const std::string& path);

/// Makes the record a copy of `length` bytes and looks for the descriptor block, from the end of
/// the image towards its start in steps of 256. The texts keep what they held wherever the image
/// brings no string of its own.
///
/// False with LastError 6 for a length below 1, null bytes or no memory for the copy; with
/// LastError 7 below 256 bytes; with LastError untouched when there is no block. `data` and `size`
/// hold the image in the last two cases. `bytes` may lie in the record's own `data`, which does not
/// outlive the call.
bool FwImage_Parse(FwImage& image, const std::uint8_t* bytes, std::int32_t length);

/// Frees the image and empties every position and number. The texts stay.
void FwImage_Release(FwImage& image);

/// Rebuilds the string area from three texts of at most 29 characters together, and the record's
/// copies with it. False when they are longer; the area is all zero then and the copies are as they
/// were. False without any change when the image has no descriptor block. The texts may be the
/// record's own.
bool FwImage_SetStrings(FwImage& image, std::string_view manufacturer, std::string_view product,
                        std::string_view serial);

/// Rebuilds the Container ID from text: its letters and digits, two to a byte, at most 32; missing
/// ones count as 0. Keeps the text as it is, cut to 63 characters. False without any change when
/// the image has no descriptor block.
bool FwImage_SetContainerId(FwImage& image, std::string_view text);

/// Reads up to three string descriptors of a string area: bLength (characters + 2), a type byte
/// that nobody checks, 8-bit characters. A text without a descriptor keeps its content; one longer
/// than 63 characters is cut.
void FwImage_ParseStrings(const std::uint8_t* area, std::uint32_t areaLength, FwText& manufacturer,
                          FwText& product, FwText& serial);

/// Puts a text in place, cut to 63 characters. What lies behind the NUL stays, so that setting a
/// text to what it is changes nothing of the 64 bytes. `text` may lie in `kept`.
void FwText_Set(FwText& kept, std::string_view text);

/// Two stored bytes, high byte first, as four upper-case hex digits; empty for a null position.
std::string FwImage_IdText(const std::uint8_t* position);

/// 16 bytes of a Container ID in stored order, in lower case with braces and dashes: 38 characters.
std::string FwImage_ContainerIdText(const std::uint8_t* id);

/// Length of a regular file in bytes, 0xFFFFFFFF when it is that long or longer. 0xFFFFFFFF too
/// when it cannot be opened for reading or is no regular file.
std::uint32_t GetFileSize(const std::string& path);

} // namespace vornadel
