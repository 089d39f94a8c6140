#include "standins/sim/NorFlash.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace vornadel
{

namespace
{

constexpr std::size_t kBlockStep = 256;
constexpr std::size_t kVersionBefore = 7;
constexpr std::size_t kStringsAt = 43;
constexpr std::size_t kStringsLength = 35;
constexpr std::size_t kStringHeader = 2;
constexpr std::size_t kContainerIdAt = 78;
constexpr std::size_t kContainerIdLength = 16;
constexpr std::array<std::array<std::uint8_t, 2>, 3> kSignatures = {
    {{0xAA, 0x55}, {0x3C, 0xC3}, {0x55, 0xAA}}};

std::uint16_t wordAt(std::span<const std::uint8_t> flash, std::size_t offset)
{
    return static_cast<std::uint16_t>((flash[offset] << 8) | flash[offset + 1]);
}

bool signatureAt(std::span<const std::uint8_t> flash, std::size_t offset)
{
    return std::any_of(kSignatures.begin(), kSignatures.end(), [&](const auto& signature) {
        return flash[offset] == signature[0] && flash[offset + 1] == signature[1];
    });
}

/// Takes the next string off the area: a byte with the length of the text plus 2, a type byte, and
/// the text in Latin-1. Control characters are left out. Empty if the length cannot be right; then
/// nothing can follow either.
std::string nextString(std::span<const std::uint8_t>& area)
{
    const std::size_t length = area.empty() ? 0 : area[0];
    if (length < kStringHeader || length > area.size()) {
        area = {};
        return {};
    }
    std::string text;
    for (const std::uint8_t character : area.first(length).subspan(kStringHeader)) {
        if (character < ' ' || (character >= 0x7F && character < 0xA0)) {
            continue;
        }
        if (character >= 0x80) {
            text += static_cast<char>(0xC0 | (character >> 6));
            text += static_cast<char>(0x80 | (character & 0x3F));
        } else {
            text += static_cast<char>(character);
        }
    }
    area = area.subspan(length);
    return text;
}

std::string containerIdText(std::span<const std::uint8_t> bytes)
{
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string text = "{";
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) {
            text += '-';
        }
        text += kDigits[bytes[i] >> 4];
        text += kDigits[bytes[i] & 0x0F];
    }
    return text + '}';
}

} // namespace

std::optional<FlashIdentity> findFlashIdentity(std::span<const std::uint8_t> flash)
{
    for (std::size_t distance = kBlockStep; distance <= flash.size(); distance += kBlockStep) {
        const std::size_t block = flash.size() - distance;
        if (!signatureAt(flash, block)) {
            continue;
        }
        if (block < kVersionBefore) {
            return std::nullopt;
        }
        return FlashIdentity{wordAt(flash, block - kVersionBefore), wordAt(flash, block + 2),
                             wordAt(flash, block + 4), wordAt(flash, block + 6), block};
    }
    return std::nullopt;
}

FlashTexts readFlashTexts(std::span<const std::uint8_t> flash, std::size_t block)
{
    std::span<const std::uint8_t> strings = flash.subspan(block + kStringsAt, kStringsLength);
    nextString(strings); // the manufacturer
    std::string product = nextString(strings);
    std::string serialNumber = nextString(strings);
    return {std::move(product), std::move(serialNumber),
            containerIdText(flash.subspan(block + kContainerIdAt, kContainerIdLength))};
}

NorFlash::NorFlash() : m_bytes(kSimulatedFlashSize, 0xFF) {}

bool NorFlash::covers(std::uint32_t address, std::size_t length)
{
    return address <= kSimulatedFlashSize && length <= kSimulatedFlashSize - address;
}

void NorFlash::erase() { std::fill(m_bytes.begin(), m_bytes.end(), std::uint8_t{0xFF}); }

void NorFlash::program(std::uint32_t address, std::span<const std::uint8_t> data)
{
    for (std::size_t i = 0; i < data.size(); ++i) {
        m_bytes[address + i] &= data[i];
    }
}

std::span<const std::uint8_t> NorFlash::read(std::uint32_t address, std::size_t length) const
{
    return std::span(m_bytes).subspan(address, length);
}

bool NorFlash::assign(std::vector<std::uint8_t> bytes)
{
    if (bytes.size() != kSimulatedFlashSize) {
        return false;
    }
    m_bytes = std::move(bytes);
    return true;
}

} // namespace vornadel
