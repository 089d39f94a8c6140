#include "firmware/IdentityEdit.h"

#include "base/GenFun.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace vornadel
{

namespace
{

constexpr std::size_t kIdFlagOffset = 10;
constexpr std::uint8_t kIdChanged = 0x01;
constexpr std::size_t kTextFlagsOffset = 42;

std::uint8_t valueAt(std::string_view text, std::size_t at)
{
    return at < text.size() ? GF_Char2Value(text[at]) : std::uint8_t{0};
}

} // namespace

void FwImage_SetIdText(std::uint8_t* position, std::string_view text)
{
    if (position == nullptr) {
        return;
    }
    for (std::size_t i = 0; i < 2; ++i) {
        position[i] =
            static_cast<std::uint8_t>(valueAt(text, 2 * i) * 16 | valueAt(text, 2 * i + 1));
    }
}

bool IdentityTexts::fit() const
{
    const auto isId = [](const std::string& text) { return text.size() == kIdDigits; };
    return isId(vid) && isId(sspid) && isId(hspid) && isId(version) &&
           manufacturer.size() + product.size() + serial.size() <= kMostCharacters;
}

void FwImage_SetIds(FwImage& image, const IdentityTexts& texts)
{
    FwImage_SetIdText(image.vid, texts.vid);
    FwImage_SetIdText(image.sspid, texts.sspid);
    FwImage_SetIdText(image.hspid, texts.hspid);
    FwImage_SetIdText(image.version, texts.version);
}

bool FwImage_EditIds(FwImage& image, std::string_view vid, std::string_view sspid,
                     std::string_view hspid)
{
    if (!image.loaded) {
        return false;
    }
    std::array<std::uint8_t, kIdsEnd - kIdsBegin> before{};
    std::copy_n(image.descriptor + kIdsBegin, before.size(), before.begin());
    FwImage_SetIdText(image.vid, vid);
    FwImage_SetIdText(image.sspid, sspid);
    FwImage_SetIdText(image.hspid, hspid);
    const bool changed = !std::equal(before.begin(), before.end(), image.descriptor + kIdsBegin);
    if (changed) {
        GF_SetMaskValue(image.descriptor + kIdFlagOffset, kIdChanged, 1);
    }
    return changed;
}

std::uint8_t FwImage_EditTexts(FwImage& image, std::string_view manufacturer,
                               std::string_view product, std::string_view serial,
                               std::string_view containerId)
{
    struct Edit {
        FwText* copy;
        std::string_view text;
        std::uint8_t flag;
        FwText before;
    };
    if (!image.loaded) {
        return 0;
    }
    Edit edits[] = {
        {&image.manufacturer, manufacturer, kManufacturerChanged, image.manufacturer},
        {&image.product, product, kProductChanged, image.product},
        {&image.serial, serial, kSerialChanged, image.serial},
        {&image.containerIdText, containerId, kContainerIdChanged, image.containerIdText},
    };
    FwImage_SetStrings(image, manufacturer, product, serial);
    FwImage_SetContainerId(image, containerId);

    std::uint8_t changed = 0;
    for (const Edit& edit : edits) {
        FwText_Set(*edit.copy, edit.text);
        if (*edit.copy != edit.before) {
            GF_SetMaskValue(image.descriptor + kTextFlagsOffset, edit.flag, 1);
            changed = static_cast<std::uint8_t>(changed | edit.flag);
        }
    }
    return changed;
}

} // namespace vornadel
