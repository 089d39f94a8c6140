#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace vornadel
{

/// NUL-terminated text of at most 63 characters. Earlier texts may leave bytes after the NUL.
using FwText = std::array<char, 64>;

/// The most bytes that manufacturer, product and serial number may have together.
inline constexpr std::size_t kMostCharacters = 29;
/// The number of hex digits in the text of a vendor id, product id or firmware version.
inline constexpr std::size_t kIdDigits = 4;

/// A whole firmware image: the content of the hub's SPI flash, with the identity fields of its
/// descriptor block located. The image has no header and no checksum.
///
/// Positions point into `data`, or are null if the field does not exist. Writing through them
/// changes the image that is saved or sent to the hub. The four texts are copies in the record. B
/// is the offset of the descriptor block, which always has 256 bytes. Not thread-safe: one owner at
/// a time.
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
    std::uint8_t* version = nullptr; ///< B - 7: firmware version, high byte first; null if B < 7
    FwText manufacturer{};
    FwText product{};
    FwText serial{};
    FwText containerIdText{}; ///< "{00112233-4455-6677-8899-aabbccddeeff}", or the text last set
};

/// Reads a whole file and parses it. If it is not a regular file, cannot be read, is empty, is
/// longer than an int32 can hold, shrinks while it is read or does not fit in memory, the result is
/// false with LastError 6, and the record is unchanged. Pipes and devices are not opened, so
/// nothing blocks. Otherwise the result is that of FwImage_Parse().
bool FwImage_LoadFile(FwImage& image, const std::string& path);

/// Copies `length` bytes into the record and looks for the descriptor block, from the end of the
/// image towards its start in steps of 256. A text without a string in the image stays as it is.
///
/// False with LastError 6 for a length below 1, null bytes or no memory for the copy; with
/// LastError 7 below 256 bytes; with LastError unchanged if there is no block. In the last two
/// cases `data` and `size` hold the image. `bytes` may point into the record's own `data`, which
/// does not outlive the call.
bool FwImage_Parse(FwImage& image, const std::uint8_t* bytes, std::int32_t length);

/// Frees the image and clears all positions and numbers. The texts stay.
void FwImage_Release(FwImage& image);

/// Rebuilds the string area from three texts of at most 29 characters together, and the record's
/// copies with it. If they are longer: false, the area is all zero and the copies are unchanged. If
/// the image has no descriptor block: false and no change. The texts may be the record's own.
bool FwImage_SetStrings(FwImage& image, std::string_view manufacturer, std::string_view product,
                        std::string_view serial);

/// Rebuilds the Container ID from the letters and digits of a text, two to a byte, at most 32;
/// missing ones count as 0. Stores the text itself too, cut to 63 characters. If the image has no
/// descriptor block: false and no change.
bool FwImage_SetContainerId(FwImage& image, std::string_view text);

/// Reads up to three string descriptors from a string area: bLength (characters + 2), a type byte,
/// which is ignored, and 8-bit characters. A text without a descriptor keeps its content; one
/// longer than 63 characters is cut.
void FwImage_ParseStrings(const std::uint8_t* area, std::uint32_t areaLength, FwText& manufacturer,
                          FwText& product, FwText& serial);

/// Sets a text, cut to 63 characters. The bytes after the NUL stay, so setting the same text again
/// changes none of the 64 bytes. `text` may point into `kept`.
void FwText_Set(FwText& kept, std::string_view text);

/// A text of an image as the operating system tells it of a hub that runs the image: in UTF-8,
/// where each byte of the image is one character, and without control characters.
std::string FwText_AsReported(const FwText& text);

/// The bytes of a loaded image from the first one of the descriptor block to the end of the image.
inline std::span<std::uint8_t> FwImage_Block(const FwImage& image)
{
    return {image.descriptor, image.data.get() + image.size};
}

/// Two stored bytes, high byte first, as four upper-case hex digits; empty for a null position.
std::string FwImage_IdText(const std::uint8_t* position);

/// 16 bytes of a Container ID in stored order, in lower case with braces and dashes: 38 characters.
std::string FwImage_ContainerIdText(const std::uint8_t* id);

/// Length of a regular file in bytes. 0xFFFFFFFF if it is that long or longer, cannot be opened for
/// reading or is not a regular file.
std::uint32_t GetFileSize(const std::string& path);

} // namespace vornadel
