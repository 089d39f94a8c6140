#include "firmware/FieldEdit.h"

#include "firmware/IdentityEdit.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <random>

namespace vornadel
{

namespace
{

constexpr char32_t kLastOneByteCharacter = 0xFF;

bool isHex(char c) { return std::isxdigit(static_cast<unsigned char>(c)) != 0; }

bool isFourHexDigits(std::string_view text)
{
    return text.size() == kIdDigits && std::all_of(text.begin(), text.end(), isHex);
}

bool isContainerId(std::string_view text)
{
    constexpr std::string_view kPattern = "hhhhhhhh-hhhh-hhhh-hhhh-hhhhhhhhhhhh";
    if (text.starts_with('{') && text.ends_with('}')) {
        text = text.substr(1, text.size() - 2);
    }
    return text.size() == kPattern.size() &&
           std::equal(text.begin(), text.end(), kPattern.begin(),
                      [](char c, char wanted) { return wanted == 'h' ? isHex(c) : c == wanted; });
}

/// The character at the start of a UTF-8 text, which is then shortened by it. Empty if it is none:
/// cut off, longer than it need be, a surrogate, or past U+10FFFF.
std::optional<char32_t> takeCharacter(std::string_view& text)
{
    constexpr char32_t kFirstOfLength[] = {0, 0x80, 0x800, 0x10000};
    const auto first = static_cast<std::uint8_t>(text.front());
    const std::size_t more = first < 0x80             ? 0
                             : (first & 0xE0) == 0xC0 ? 1
                             : (first & 0xF0) == 0xE0 ? 2
                             : (first & 0xF8) == 0xF0 ? 3
                                                      : text.size();
    if (more >= text.size()) {
        return {};
    }
    char32_t character = more == 0 ? first : first & (0x3FU >> more);
    for (std::size_t i = 1; i <= more; ++i) {
        const auto byte = static_cast<std::uint8_t>(text[i]);
        if ((byte & 0xC0) != 0x80) {
            return {};
        }
        character = character << 6 | (byte & 0x3FU);
    }
    const bool surrogate = character >= 0xD800 && character <= 0xDFFF;
    if (character < kFirstOfLength[more] || surrogate || character > 0x10FFFF) {
        return {};
    }
    text.remove_prefix(more + 1);
    return character;
}

std::optional<std::u32string> charactersIn(std::string_view text)
{
    std::u32string characters;
    while (!text.empty()) {
        const std::optional<char32_t> character = takeCharacter(text);
        if (!character) {
            return {};
        }
        characters += *character;
    }
    return characters;
}

/// The bytes of a new text for a field that shows `old`, as editor/ImageText.h has it.
std::string typedOver(std::string_view old, const std::string& text)
{
    if (charactersIn(old)) {
        return text;
    }
    const std::u32string characters = charactersIn(text).value_or(std::u32string());
    std::string bytes;
    for (const char32_t character : characters) {
        if (character > kLastOneByteCharacter) {
            return text;
        }
        bytes += static_cast<char>(character);
    }
    return bytes;
}

bool isId(IdentityField field) { return field <= IdentityField::Hspid; }

using FieldTexts = std::array<std::string, kIdentityFieldNames.size()>;

std::string& at(FieldTexts& texts, IdentityField field)
{
    return texts.at(static_cast<std::size_t>(field));
}

FieldTexts textsOf(const FwImage& image)
{
    FieldTexts texts;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        texts.at(i) = FwImage_FieldText(image, static_cast<IdentityField>(i));
    }
    return texts;
}

} // namespace

std::optional<IdentityField> identityFieldNamed(std::string_view name)
{
    const auto* const found =
        std::find(kIdentityFieldNames.begin(), kIdentityFieldNames.end(), name);
    if (found == kIdentityFieldNames.end()) {
        return {};
    }
    return static_cast<IdentityField>(found - kIdentityFieldNames.begin());
}

std::string FwImage_FieldText(const FwImage& image, IdentityField field)
{
    switch (field) {
    case IdentityField::Vid:
        return FwImage_IdText(image.vid);
    case IdentityField::Sspid:
        return FwImage_IdText(image.sspid);
    case IdentityField::Hspid:
        return FwImage_IdText(image.hspid);
    case IdentityField::Manufacturer:
        return image.manufacturer.data();
    case IdentityField::Product:
        return image.product.data();
    case IdentityField::Serial:
        return image.serial.data();
    case IdentityField::ContainerId:
        return image.containerIdText.data();
    }
    return {};
}

FieldFlaw findFlaw(const FieldEdit& edit)
{
    if (isId(edit.field)) {
        return isFourHexDigits(edit.text) ? FieldFlaw::None : FieldFlaw::NotAnId;
    }
    if (edit.field == IdentityField::ContainerId) {
        return isContainerId(edit.text) ? FieldFlaw::None : FieldFlaw::NotAContainerId;
    }
    return charactersIn(edit.text) ? FieldFlaw::None : FieldFlaw::NotUtf8;
}

FieldFlaw FwImage_FindEditFlaw(const FwImage& image, std::span<const FieldEdit> edits,
                               std::size_t& culprit)
{
    FieldTexts texts = textsOf(image);
    for (culprit = 0; culprit < edits.size(); ++culprit) {
        const FieldEdit& edit = edits[culprit];
        if (const FieldFlaw flaw = findFlaw(edit); flaw != FieldFlaw::None) {
            return flaw;
        }
        at(texts, edit.field) = typedOver(at(texts, edit.field), edit.text);
    }
    const std::size_t length = at(texts, IdentityField::Manufacturer).size() +
                               at(texts, IdentityField::Product).size() +
                               at(texts, IdentityField::Serial).size();
    if (length > kMostCharacters) {
        return FieldFlaw::TooLong;
    }
    return image.version == nullptr ? FieldFlaw::NoVersion : FieldFlaw::None;
}

void FwImage_EditFields(FwImage& image, std::span<const FieldEdit> edits)
{
    FieldTexts texts = textsOf(image);
    for (const FieldEdit& edit : edits) {
        std::string& text = at(texts, edit.field);
        if (isId(edit.field)) {
            text = edit.text;
            FwImage_EditIds(image, at(texts, IdentityField::Vid), at(texts, IdentityField::Sspid),
                            at(texts, IdentityField::Hspid));
        } else {
            text = typedOver(text, edit.text);
            FwImage_EditTexts(image, at(texts, IdentityField::Manufacturer),
                              at(texts, IdentityField::Product), at(texts, IdentityField::Serial),
                              at(texts, IdentityField::ContainerId));
        }
    }
}

void FwImage_RebuildStrings(FwImage& image)
{
    FwImage_SetStrings(image, image.manufacturer.data(), image.product.data(), image.serial.data());
}

std::string newContainerId()
{
    std::random_device random;
    std::array<std::uint8_t, 16> id{};
    std::generate(id.begin(), id.end(), [&random] { return static_cast<std::uint8_t>(random()); });
    id[6] = static_cast<std::uint8_t>((id[6] & 0x0F) | 0x40); // version 4
    id[8] = static_cast<std::uint8_t>((id[8] & 0x3F) | 0x80); // the RFC's variant
    return FwImage_ContainerIdText(id.data());
}

} // namespace vornadel
