#pragma once

#include "base/LastError.h"
#include "firmware/FwImage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace vornadel::test
{

using ByteList = std::vector<std::uint8_t>;

inline void putAt(ByteList& bytes, std::size_t offset, std::initializer_list<std::uint8_t> values)
{
    std::copy(values.begin(), values.end(), bytes.begin() + static_cast<std::ptrdiff_t>(offset));
}

/// One string descriptor.
inline ByteList descriptorOf(std::string_view text)
{
    ByteList bytes{static_cast<std::uint8_t>(text.size() + 2), 3};
    bytes.insert(bytes.end(), text.begin(), text.end());
    return bytes;
}

/// Zeros with a descriptor block at `block`: ids, strings "Maker", "Hub" and "42", and a Container
/// ID of ascending bytes.
inline ByteList imageWithBlock(std::size_t length, std::size_t block)
{
    ByteList bytes(length, 0);
    putAt(bytes, block, {0x55, 0xAA, 0x12, 0x09, 0x33, 0x00, 0x22, 0x01});
    std::size_t at = block + 43;
    for (const std::string_view text : {"Maker", "Hub", "42"}) {
        for (const std::uint8_t byte : descriptorOf(text)) {
            bytes[at++] = byte;
        }
    }
    for (std::size_t i = 0; i < 16; ++i) {
        bytes[block + 78 + i] = static_cast<std::uint8_t>(i * 0x11);
    }
    if (block >= 7) {
        putAt(bytes, block - 7, {0x01, 0x05});
    }
    return bytes;
}

inline bool parse(FwImage& image, const ByteList& bytes)
{
    return FwImage_Parse(image, bytes.data(), static_cast<std::int32_t>(bytes.size()));
}

inline std::string textOf(const FwText& text) { return std::string(text.data()); }

inline ByteList bytesAt(const std::uint8_t* position, std::size_t count)
{
    return ByteList(position, position + count);
}

/// All number and position fields are as in a fresh record.
inline void expectEmpty(const FwImage& image)
{
    EXPECT_FALSE(image.loaded);
    EXPECT_EQ(image.descriptor, nullptr);
    EXPECT_EQ(image.strings, nullptr);
    EXPECT_EQ(image.containerId, nullptr);
    EXPECT_EQ(image.stringsLength, 0U);
    EXPECT_EQ(image.containerIdLength, 0U);
    EXPECT_EQ(image.vid, nullptr);
    EXPECT_EQ(image.sspid, nullptr);
    EXPECT_EQ(image.hspid, nullptr);
    EXPECT_EQ(image.version, nullptr);
}

} // namespace vornadel::test
