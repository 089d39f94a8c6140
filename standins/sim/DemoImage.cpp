#include "standins/sim/DemoImage.h"

#include "standins/sim/NorFlash.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace vornadel
{

namespace
{

constexpr std::size_t kBlock = 0x7E00;
constexpr std::size_t kCodeEnd = 0x6000;        // erased flash from here to the version word
constexpr std::size_t kChangedCode = 0x1200;    // code that differs between versions: from here
constexpr std::size_t kChangedCodeEnd = 0x2A80; // to here
constexpr std::size_t kBanner = 0x0040;
constexpr std::uint32_t kCodeSeed = 0x1F0C5EED;

struct BlockByte {
    std::size_t offset; // from the block's first byte
    std::uint8_t value;
};

constexpr std::array<std::uint8_t, 8> kIds = {0xAA, 0x55, 0x12, 0x09, 0x00, 0x01, 0x00, 0x02};

// Configuration for the property pages to show.
constexpr std::array<BlockByte, 34> kConfiguration = {{
    {8, 0x01},   {9, 0x00},   {11, 0x0F},  {12, 0x32},  {13, 0x04},  {14, 0x81},  {16, 0x64},
    {17, 0x1E},  {19, 0x03},  {20, 0xA5},  {22, 0x7C},  {25, 0x10},  {28, 0x48},  {31, 0x02},
    {33, 0xC0},  {36, 0x5A},  {38, 0x11},  {41, 0x80},  {94, 0x01},  {95, 0x26},  {100, 0x33},
    {104, 0x0C}, {112, 0xF0}, {120, 0x55}, {127, 0x07}, {128, 0x96}, {144, 0x21}, {160, 0x3F},
    {176, 0x88}, {192, 0x14}, {208, 0xE1}, {224, 0x6B}, {240, 0x09}, {255, 0x5C},
}};

constexpr std::size_t kStrings = 43;
constexpr std::array<std::string_view, 2> kStringTexts = {"Vornadel", "Demo Hub"};

constexpr std::size_t kContainerId = 78;
constexpr std::array<std::uint8_t, 16> kContainerIdBytes = {
    0x5D, 0x0F, 0xC2, 0x71, 0x3A, 0x94, 0x4E, 0x6B, 0x9C, 0x18, 0x27, 0xB0, 0xE4, 0x63, 0xD1, 0x08};

/// Bytes that look like code, but never like the start of a descriptor block.
class CodeBytes
{
public:
    explicit CodeBytes(std::uint32_t seed) : m_state(seed) {}

    std::uint8_t next()
    {
        m_state ^= m_state << 13;
        m_state ^= m_state >> 17;
        m_state ^= m_state << 5;
        const auto value = static_cast<std::uint8_t>(m_state >> 24);
        // each signature contains one of these two
        return value == 0x55 || value == 0xC3 ? std::uint8_t{0x00} : value;
    }

private:
    std::uint32_t m_state;
};

void putCode(std::vector<std::uint8_t>& image, std::size_t from, std::size_t to, std::uint32_t seed)
{
    CodeBytes code(seed);
    for (std::size_t i = from; i < to; ++i) {
        image[i] = code.next();
    }
}

void putBanner(std::vector<std::uint8_t>& image, std::uint16_t version)
{
    std::string text = "Vornadel demo hub firmware ";
    text += std::to_string(version >> 8) + '.';
    text += std::to_string((version >> 4) & 0x0F) + std::to_string(version & 0x0F);
    std::copy(text.begin(), text.end(), image.begin() + kBanner);
    image[kBanner + text.size()] = 0x00;
}

/// For example "SN0001".
std::string serialNumber(unsigned hub)
{
    const std::string digits = std::to_string(hub);
    return "SN" + std::string(4 - digits.size(), '0') + digits;
}

void putBlock(std::vector<std::uint8_t>& image, unsigned hub)
{
    const auto block = image.begin() + kBlock;
    std::fill_n(block, 256, std::uint8_t{0x00});
    std::copy(kIds.begin(), kIds.end(), block);
    for (const BlockByte& byte : kConfiguration) {
        image[kBlock + byte.offset] = byte.value;
    }
    auto string = block + kStrings;
    const std::string serial = serialNumber(hub);
    for (const std::string_view text :
         {kStringTexts[0], kStringTexts[1], std::string_view(serial)}) {
        *string++ = static_cast<std::uint8_t>(text.size() + 2);
        *string++ = 3;
        string = std::copy(text.begin(), text.end(), string);
    }
    std::copy(kContainerIdBytes.begin(), kContainerIdBytes.end(), block + kContainerId);
    image[kBlock + kContainerId + kContainerIdBytes.size() - 1] +=
        static_cast<std::uint8_t>(hub - 1);
}

} // namespace

std::vector<std::uint8_t> demoImage(std::uint16_t version, unsigned hub)
{
    std::vector<std::uint8_t> image(kSimulatedFlashSize, 0xFF);
    putCode(image, 0, kCodeEnd, kCodeSeed);
    putCode(image, kChangedCode, kChangedCodeEnd, kCodeSeed + version);
    putBanner(image, version);
    image[kBlock - 7] = static_cast<std::uint8_t>(version >> 8);
    image[kBlock - 6] = static_cast<std::uint8_t>(version & 0xFF);
    putBlock(image, hub);
    return image;
}

} // namespace vornadel
