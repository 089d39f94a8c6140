#include "firmware/FwImage.h"

#include "base/Descriptor.h"
#include "base/GenFun.h"
#include "base/LastError.h"
#include "firmware/ImageState.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vornadel
{

namespace
{

constexpr int kUnreadable = 6;
constexpr int kTooShort = 7;

constexpr std::int32_t kBlockSize = 256;
constexpr std::int32_t kVersionOffset = -7;
constexpr std::int32_t kVidOffset = 2;
constexpr std::int32_t kSspidOffset = 4;
constexpr std::int32_t kHspidOffset = 6;
constexpr std::int32_t kStringsOffset = 43;
constexpr std::int32_t kContainerIdOffset = 78;

constexpr std::uint32_t kStringsLength = 35;
constexpr std::uint32_t kContainerIdLength = 16;
constexpr std::size_t kContainerIdDigits = 32;
constexpr std::size_t kStringHeader = 2;
constexpr std::uint8_t kStringDescriptorType = 3;
static_assert(kMostCharacters == kStringsLength - 3 * kStringHeader);

constexpr std::uint8_t kSignatures[][2] = {{0xAA, 0x55}, {0x3C, 0xC3}, {0x55, 0xAA}};

using Bytes = std::unique_ptr<std::uint8_t[]>;

// Null if there is no memory. Not zeroed, because the caller fills all of it.
Bytes allocate(std::size_t count) { return Bytes(new (std::nothrow) std::uint8_t[count]); }

std::uint8_t* findDescriptor(std::uint8_t* data, std::int32_t length)
{
    for (std::int32_t offset = length - kBlockSize; offset >= 0; offset -= kBlockSize) {
        for (const auto& signature : kSignatures) {
            if (data[offset] == signature[0] && data[offset + 1] == signature[1]) {
                return data + offset;
            }
        }
    }
    return nullptr;
}

/// The characters of a string descriptor.
std::string_view textOf(const std::uint8_t* string)
{
    return {reinterpret_cast<const char*>(string + kStringHeader), string[0] - kStringHeader};
}

void locateFields(FwImage& image, std::uint8_t* block)
{
    image.descriptor = block;
    image.strings = block + kStringsOffset;
    image.containerId = block + kContainerIdOffset;
    image.stringsLength = kStringsLength;
    image.containerIdLength = kContainerIdLength;
    image.vid = block + kVidOffset;
    image.sspid = block + kSspidOffset;
    image.hspid = block + kHspidOffset;
    image.version = block - image.data.get() >= -kVersionOffset ? block + kVersionOffset : nullptr;
}

// Takes over the bytes and parses them.
bool adopt(FwImage& image, Bytes bytes, std::int32_t length)
{
    FwImage_Release(image);
    image.data = std::move(bytes);
    image.size = length;
    if (length < kBlockSize) {
        LastError = kTooShort;
        return false;
    }
    std::uint8_t* const block = findDescriptor(image.data.get(), length);
    if (block == nullptr) {
        return false;
    }
    locateFields(image, block);
    FwImage_ParseStrings(image.strings, image.stringsLength, image.manufacturer, image.product,
                         image.serial);
    FwText_Set(image.containerIdText, FwImage_ContainerIdText(image.containerId));
    image.loaded = true;
    return true;
}

// None for anything but a regular file: opening a pipe or a device could block.
Descriptor openImage(const std::string& path)
{
    struct stat info = {};
    const bool regular = ::stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode);
    return Descriptor(regular ? ::open(path.c_str(), O_RDONLY | O_CLOEXEC) : -1);
}

/// 0xFFFFFFFF if it is that long or longer, or not known.
std::uint32_t lengthOf(const Descriptor& file)
{
    constexpr std::uint32_t kUnknown = std::numeric_limits<std::uint32_t>::max();
    struct stat info = {};
    if (::fstat(file.get(), &info) != 0) {
        return kUnknown;
    }
    return static_cast<std::uint32_t>(
        std::min<std::uint64_t>(static_cast<std::uint64_t>(info.st_size), kUnknown));
}

// The whole file, or null.
Bytes readFile(const Descriptor& file, std::size_t size)
{
    Bytes bytes = allocate(size);
    for (std::size_t done = 0; bytes != nullptr && done < size;) {
        const ssize_t count = ::read(file.get(), bytes.get() + done, size - done);
        if (count > 0) {
            done += static_cast<std::size_t>(count);
        } else if (count == 0 || errno != EINTR) {
            return nullptr;
        }
    }
    return bytes;
}

} // namespace

bool FwImage_LoadFile(FwImage& image, const std::string& path)
{
    constexpr std::uint32_t kLongest = std::numeric_limits<std::int32_t>::max();
    const Descriptor file = openImage(path);
    const std::uint32_t size = lengthOf(file);
    Bytes bytes = size >= 1 && size <= kLongest ? readFile(file, size) : nullptr;
    if (bytes == nullptr) {
        LastError = kUnreadable;
        return false;
    }
    return adopt(image, std::move(bytes), static_cast<std::int32_t>(size));
}

bool FwImage_Parse(FwImage& image, const std::uint8_t* bytes, std::int32_t length)
{
    Bytes copy =
        bytes != nullptr && length >= 1 ? allocate(static_cast<std::size_t>(length)) : nullptr;
    if (copy == nullptr) {
        FwImage_Release(image);
        image.size = std::min(length, 0);
        LastError = kUnreadable;
        return false;
    }
    std::memcpy(copy.get(), bytes, static_cast<std::size_t>(length));
    return adopt(image, std::move(copy), length);
}

void FwImage_Release(FwImage& image)
{
    image.loaded = false;
    image.data.reset();
    image.size = 0;
    image.stringsLength = 0;
    image.containerIdLength = 0;
    image.descriptor = image.strings = image.containerId = nullptr;
    image.vid = image.sspid = image.hspid = image.version = nullptr;
}

ImageState FwImage_State(const FwImage& image)
{
    ImageState state;
    state.loaded = image.loaded;
    if (image.data != nullptr) {
        state.bytes.assign(image.data.get(), image.data.get() + image.size);
    }
    if (image.loaded) {
        state.block = static_cast<std::size_t>(image.descriptor - image.data.get());
    }
    state.texts = {image.manufacturer, image.product, image.serial, image.containerIdText};
    return state;
}

bool FwImage_Restore(FwImage& image, const ImageState& state)
{
    FwImage_Release(image);
    if (!state.bytes.empty()) {
        image.data = allocate(state.bytes.size());
        if (image.data == nullptr) {
            return false;
        }
        std::copy(state.bytes.begin(), state.bytes.end(), image.data.get());
        image.size = static_cast<std::int32_t>(state.bytes.size());
    }
    if (state.loaded) {
        locateFields(image, image.data.get() + state.block);
    }
    image.manufacturer = state.texts[0];
    image.product = state.texts[1];
    image.serial = state.texts[2];
    image.containerIdText = state.texts[3];
    image.loaded = state.loaded;
    return true;
}

bool FwImage_SetStrings(FwImage& image, std::string_view manufacturer, std::string_view product,
                        std::string_view serial)
{
    if (image.strings == nullptr) {
        return false;
    }
    const std::string_view texts[] = {manufacturer, product, serial};
    FwText* const copies[] = {&image.manufacturer, &image.product, &image.serial};

    // Built in a separate area, because the texts may be the record's own.
    std::uint8_t area[kStringsLength] = {};
    const bool fits = manufacturer.size() + product.size() + serial.size() <= kMostCharacters;
    if (fits) {
        std::size_t at = 0;
        for (const std::string_view text : texts) {
            area[at] = static_cast<std::uint8_t>(text.size() + kStringHeader);
            area[at + 1] = kStringDescriptorType;
            std::copy(text.begin(), text.end(), area + at + kStringHeader);
            at += area[at];
        }
        at = 0;
        for (FwText* copy : copies) {
            FwText_Set(*copy, textOf(area + at));
            at += area[at];
        }
    }
    // Texts that are too long wipe the strings of the image.
    std::copy(std::begin(area), std::end(area), image.strings);
    return fits;
}

bool FwImage_SetContainerId(FwImage& image, std::string_view text)
{
    if (image.containerId == nullptr) {
        return false;
    }
    std::uint8_t id[kContainerIdLength] = {};
    std::size_t digits = 0;
    for (const char c : text) {
        if (GF_IsAlphaNum(c) && digits < kContainerIdDigits) {
            const unsigned weight = digits % 2 == 0 ? 16 : 1;
            std::uint8_t& byte = id[digits / 2];
            byte = static_cast<std::uint8_t>(byte + GF_Char2Value(c) * weight);
            ++digits;
        }
    }
    FwText_Set(image.containerIdText, text);
    std::copy(std::begin(id), std::end(id), image.containerId);
    return true;
}

void FwImage_ParseStrings(const std::uint8_t* area, std::uint32_t areaLength, FwText& manufacturer,
                          FwText& product, FwText& serial)
{
    std::size_t at = 0;
    for (FwText* text : {&manufacturer, &product, &serial}) {
        // A length of 1 is less than the header; the area ends here.
        if (at >= areaLength || area[at] < kStringHeader || at + area[at] > areaLength) {
            return;
        }
        FwText_Set(*text, textOf(area + at));
        at += area[at];
    }
}

void FwText_Set(FwText& kept, std::string_view text)
{
    const std::size_t count = std::min(text.size(), kept.size() - 1);
    if (count > 0) { // the data pointer of an empty view may be null
        std::memmove(kept.data(), text.data(), count);
    }
    kept[count] = '\0';
}

std::string FwText_AsReported(const FwText& text)
{
    constexpr std::uint8_t kFirstOfTwoBytes = 0x80;
    constexpr std::uint8_t kDelete = 0x7F;
    constexpr std::uint8_t kLastControl = 0x9F;
    std::string reported;
    for (const char c : std::string_view(text.data())) {
        const auto character = static_cast<std::uint8_t>(c);
        if (character < ' ' || (character >= kDelete && character <= kLastControl)) {
            continue;
        }
        if (character >= kFirstOfTwoBytes) {
            reported += static_cast<char>(0xC0 | character >> 6);
            reported += static_cast<char>(0x80 | (character & 0x3F));
        } else {
            reported += c;
        }
    }
    return reported;
}

std::string FwImage_IdText(const std::uint8_t* position)
{
    if (position == nullptr) {
        return {};
    }
    std::array<char, kIdDigits + 1> text{};
    std::snprintf(text.data(), text.size(), "%02X%02X", position[0], position[1]);
    return text.data();
}

std::string FwImage_ContainerIdText(const std::uint8_t* id)
{
    std::string text = "{";
    for (std::size_t i = 0; i < kContainerIdLength; ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) {
            text += '-';
        }
        text += GF_Value2HexChar(static_cast<std::uint8_t>(id[i] >> 4));
        text += GF_Value2HexChar(id[i] & 0x0F);
    }
    return text + '}';
}

std::uint32_t GetFileSize(const std::string& path) { return lengthOf(openImage(path)); }

} // namespace vornadel
