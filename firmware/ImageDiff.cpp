#include "firmware/ImageDiff.h"

#include "firmware/FieldEdit.h"
#include "firmware/IdentityEdit.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace vornadel
{

namespace
{

constexpr std::uint32_t kJoinedBelow = 16;
constexpr std::size_t kIdFlags = 10;
constexpr std::uint8_t kIdChangeFlag = 0x01;
constexpr std::size_t kTextFlags = 42;

constexpr struct {
    std::size_t offset;
    std::uint8_t bit;
    std::string_view name;
} kChangeFlags[] = {
    {kIdFlags, kIdChangeFlag, "ids"},
    {kTextFlags, kManufacturerChanged, "manufacturer"},
    {kTextFlags, kProductChanged, "product"},
    {kTextFlags, kSerialChanged, "serial"},
    {kTextFlags, kContainerIdChanged, "container-id"},
};

std::string changedFields(const FwImage& image)
{
    std::string names;
    for (const auto& flag : kChangeFlags) {
        if ((image.descriptor[flag.offset] & flag.bit) != 0) {
            names += (names.empty() ? "" : " ") + std::string(flag.name);
        }
    }
    return names.empty() ? "none" : names;
}

std::string hexOffset(std::ptrdiff_t offset)
{
    std::array<char, 24> text{};
    std::snprintf(text.data(), text.size(), "0x%04tX", offset);
    return text.data();
}

/// Bytes of the compared image at an offset from its block; those that it has.
void omit(ComparedBits& compared, std::ptrdiff_t from, std::size_t count, std::uint8_t bits)
{
    for (std::size_t i = 0; i < count; ++i) {
        const auto at = static_cast<std::size_t>(from) + i;
        if (at < compared.size()) {
            compared[at] = static_cast<std::uint8_t>(compared[at] & ~bits);
        }
    }
}

} // namespace

std::vector<NamedText> FwImage_Fields(const FwImage& image)
{
    std::vector<NamedText> fields = {{"block", hexOffset(image.descriptor - image.data.get())},
                                     {"version", FwImage_IdText(image.version)}};
    for (std::size_t i = 0; i < kIdentityFieldNames.size(); ++i) {
        fields.push_back(
            {kIdentityFieldNames.at(i), FwImage_FieldText(image, static_cast<IdentityField>(i))});
    }
    fields.push_back({"changed", changedFields(image)});
    return fields;
}

std::vector<FieldDifference> FwImage_FieldDifferences(const FwImage& before, const FwImage& after)
{
    std::vector<FieldDifference> differences;
    if (before.loaded && after.loaded) {
        std::vector<NamedText> old = FwImage_Fields(before);
        std::vector<NamedText> now = FwImage_Fields(after);
        for (std::size_t i = 0; i < old.size(); ++i) {
            if (old[i].text != now[i].text) {
                differences.push_back(
                    {old[i].name, std::move(old[i].text), std::move(now[i].text)});
            }
        }
    }
    return differences;
}

void FwImage_OmitFields(ComparedBits& compared, const FwImage& before, const FwImage& after)
{
    if (!before.loaded || !after.loaded) {
        return;
    }
    const std::ptrdiff_t block = before.descriptor - before.data.get();
    if (block != after.descriptor - after.data.get()) {
        return;
    }
    constexpr std::uint8_t kAll = 0xFF;
    if (before.version != nullptr) {
        omit(compared, before.version - before.data.get(), 2, kAll);
    }
    omit(compared, block + kIdsBegin, kIdsEnd - kIdsBegin, kAll);
    for (const auto& flag : kChangeFlags) {
        omit(compared, block + static_cast<std::ptrdiff_t>(flag.offset), 1, flag.bit);
    }
    // The same strings can be stored in different ways; then the bytes are all there is to tell.
    const auto strings = [](const FwImage& image) {
        return std::array<std::string, 3>{image.manufacturer.data(), image.product.data(),
                                          image.serial.data()};
    };
    if (strings(before) != strings(after)) {
        omit(compared, before.strings - before.data.get(), before.stringsLength, kAll);
    }
    omit(compared, before.containerId - before.data.get(), before.containerIdLength, kAll);
}

std::vector<DifferentRange> differentRanges(std::span<const std::uint8_t> before,
                                            std::span<const std::uint8_t> after,
                                            const ComparedBits& compared)
{
    std::vector<DifferentRange> ranges;
    const std::size_t common = std::min(before.size(), after.size());
    const auto end = static_cast<std::uint32_t>(std::max(before.size(), after.size()));
    for (std::uint32_t at = 0; at < end; ++at) {
        const int bits = at < compared.size() ? compared[at] : 0xFF;
        if (at < common && ((before[at] ^ after[at]) & bits) == 0) {
            continue;
        }
        if (ranges.empty() || at - ranges.back().end >= kJoinedBelow) {
            ranges.push_back({at, at, 0});
        }
        ranges.back().end = at + 1;
        ++ranges.back().bytes;
    }
    return ranges;
}

} // namespace vornadel
