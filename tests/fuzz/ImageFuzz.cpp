// The image loader, edits of the identity fields in an image, and its hex view.
//
// An input is, in order: two words with the begin and end of the red bytes; the texts of the three
// ids and the version, of the three strings and of the Container ID, each after a byte with its
// length; the image.

#include "editor/HexText.h"
#include "firmware/FwImage.h"
#include "firmware/IdentityEdit.h"
#include "tests/fuzz/FuzzInput.h"

#include <QString>
#include <QStringList>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstring>
#include <string>
#include <vector>

namespace vornadel::test
{

namespace
{

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kBlockSize = 256;

Bytes bytesOf(const FwImage& image)
{
    return {image.data.get(), image.data.get() + static_cast<std::size_t>(image.size)};
}

std::size_t offsetIn(const FwImage& image, const std::uint8_t* position)
{
    return static_cast<std::size_t>(position - image.data.get());
}

/// The offset of the descriptor block, searched from the start; the length of the image if there is
/// none.
std::size_t blockIn(const Bytes& bytes)
{
    std::size_t found = bytes.size();
    for (std::size_t at = bytes.size() % kBlockSize; at + kBlockSize <= bytes.size();
         at += kBlockSize) {
        const unsigned signature = static_cast<unsigned>(bytes[at] << 8 | bytes[at + 1]);
        if (signature == 0xAA55 || signature == 0x3CC3 || signature == 0x55AA) {
            found = at;
        }
    }
    return found;
}

/// The expected texts of a record that held none before: only whole descriptors within 35 bytes
/// count.
void requireTextsOf(const FwImage& image)
{
    const std::uint8_t* const area = image.descriptor + 43;
    std::array<std::string, 3> expected;
    std::size_t at = 0;
    for (std::string& text : expected) {
        const std::size_t length = at < 35 ? area[at] : 0;
        if (length < 2 || at + length > 35) {
            break;
        }
        text.assign(area + at + 2, area + at + length);
        at += length;
    }
    const std::array<const FwText*, 3> texts = {&image.manufacturer, &image.product, &image.serial};
    for (std::size_t i = 0; i < texts.size(); ++i) {
        require(std::strcmp(texts.at(i)->data(), expected.at(i).c_str()) == 0,
                "texts are those of the image");
    }
}

void requireWellFormed(const FwImage& image, const Bytes& bytes)
{
    const std::size_t block = blockIn(bytes);
    require(image.loaded == (block < bytes.size()), "an image is loaded when it has a block");
    require(bytesOf(image) == bytes, "the record holds the bytes that it was given");
    require(image.loaded || image.descriptor == nullptr, "positions are null without a block");
    if (image.loaded) {
        require(offsetIn(image, image.descriptor) == block, "the last block is the one");
        require((image.version == nullptr) == (block < 7),
                "the version is there when there is room for it");
    }
    for (const FwText* text :
         {&image.manufacturer, &image.product, &image.serial, &image.containerIdText}) {
        require(std::find(text->begin(), text->end(), '\0') != text->end(), "texts have an end");
    }
}

/// Checks that only the given bytes of the block have changed, and in byte `flags` only the bits in
/// `mask`.
void requireOnlyChanged(const FwImage& image, const Bytes& before, std::size_t begin,
                        std::size_t end, std::size_t flags, std::uint8_t mask)
{
    const std::size_t block = offsetIn(image, image.descriptor);
    const Bytes after = bytesOf(image);
    require(after.size() == before.size(), "an edit leaves the length as it is");
    for (std::size_t i = 0; i < after.size(); ++i) {
        const bool inside = i >= block + begin && i < block + end;
        const auto allowed = static_cast<std::uint8_t>(inside               ? 0xFF
                                                       : i == block + flags ? mask
                                                                            : 0);
        require(((after[i] ^ before[i]) & ~allowed) == 0, "an edit changes its own bytes alone");
    }
}

bool isIdText(const std::string& text)
{
    return text.size() == kIdDigits && std::all_of(text.begin(), text.end(), [](unsigned char c) {
               return std::isxdigit(c) != 0;
           });
}

std::string upper(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return text;
}

void editIds(FwImage& image, const IdentityTexts& texts)
{
    const Bytes before = bytesOf(image);
    const bool changed = FwImage_EditIds(image, texts.vid, texts.sspid, texts.hspid);
    requireOnlyChanged(image, before, kIdsBegin, kIdsEnd, 10, 0x01);
    require(!changed || (image.descriptor[10] & 1) != 0, "a change of the ids is flagged");
    require(changed || bytesOf(image) == before, "what tells of no change has changed nothing");
    require(!FwImage_EditIds(image, texts.vid, texts.sspid, texts.hspid),
            "the same ids are no change");
    const std::array<std::pair<const std::string*, const std::uint8_t*>, 3> ids = {
        {{&texts.vid, image.vid}, {&texts.sspid, image.sspid}, {&texts.hspid, image.hspid}}};
    for (const auto& [text, position] : ids) {
        require(!isIdText(*text) || FwImage_IdText(position) == upper(*text),
                "an id reads back as typed");
    }
}

void editTexts(FwImage& image, const IdentityTexts& texts, const std::string& containerId)
{
    const Bytes before = bytesOf(image);
    const auto edit = [&] {
        return FwImage_EditTexts(image, texts.manufacturer, texts.product, texts.serial,
                                 containerId);
    };
    const std::uint8_t flags = edit();
    requireOnlyChanged(image, before, kTextsBegin, kTextsEnd, 42, 0x0F);
    require((image.descriptor[42] & flags) == flags, "a change of the texts is flagged");
    const Bytes after = bytesOf(image);
    require(edit() == 0 && bytesOf(image) == after, "the same texts are no change");

    const std::string together = texts.manufacturer + texts.product + texts.serial;
    if (together.size() > kMostCharacters) {
        require(std::count(image.strings, image.strings + image.stringsLength, 0) == 35,
                "strings that are too long leave none");
        return;
    }
    FwText manufacturer{};
    FwText product{};
    FwText serial{};
    FwImage_ParseStrings(image.strings, image.stringsLength, manufacturer, product, serial);
    const auto readsBack = [](const FwText& read, const std::string& text) {
        return std::equal(text.begin(), text.end(), read.begin()) && read.at(text.size()) == '\0';
    };
    require(readsBack(manufacturer, texts.manufacturer) && readsBack(product, texts.product) &&
                readsBack(serial, texts.serial),
            "strings read back as typed");
}

/// Does what the page does when it saves: writes everything at once, including the version.
void setIds(FwImage& image, const IdentityTexts& texts)
{
    Bytes expected = bytesOf(image);
    FwImage_SetIds(image, texts);
    const Bytes after = bytesOf(image);
    const std::size_t block = offsetIn(image, image.descriptor);
    std::copy_n(after.begin() + static_cast<std::ptrdiff_t>(block + kIdsBegin), kIdsEnd - kIdsBegin,
                expected.begin() + static_cast<std::ptrdiff_t>(block + kIdsBegin));
    if (image.version != nullptr) {
        const std::size_t version = offsetIn(image, image.version);
        expected[version] = after[version];
        expected[version + 1] = after[version + 1];
        require(!isIdText(texts.version) || FwImage_IdText(image.version) == upper(texts.version),
                "the version reads back as typed");
    }
    require(after == expected, "saving the ids changes their bytes and the version's alone");
}

void requireHexOf(const FwImage& image, std::uint32_t begin, std::uint32_t end)
{
    const HexText hex = hexText(image, begin, end);
    const QStringList lines = hex.text.split('\n', Qt::SkipEmptyParts);
    require(lines.size() == 16, "the hex view has sixteen lines");
    qsizetype lineStart = 0;
    for (std::size_t row = 0; row < 16; ++row) {
        const QString& line = lines[static_cast<qsizetype>(row)];
        const qsizetype colon = line.indexOf(':');
        require(line.left(colon) ==
                    QString::asprintf("%04zXh", offsetIn(image, image.descriptor) + 16 * row),
                "a line begins with its offset");
        const QStringList columns = line.mid(colon + 1).split(' ', Qt::SkipEmptyParts);
        require(columns.size() == 17 && columns[8] == "-", "a line has two halves of eight bytes");
        for (std::size_t i = 0; i < 16; ++i) {
            const auto column = static_cast<qsizetype>(i < 8 ? i : i + 1);
            require(columns[column] == QString::asprintf("%02X", image.descriptor[16 * row + i]),
                    "the bytes on view are the block's");
            const qsizetype digits =
                lineStart + colon + 1 + 3 * static_cast<qsizetype>(i) + (i < 8 ? 0 : 2);
            const bool red = digits >= hex.redStart && digits < hex.redStart + hex.redLength;
            const std::size_t offset = 16 * row + i;
            require(red == (offset >= std::min(begin, end) && offset < std::max(begin, end)),
                    "the bytes in the range are red and no others");
        }
        lineStart += line.size() + 1;
    }
    require(hex.redStart >= 0 && hex.redStart + hex.redLength <= hex.text.size(),
            "the red lies in the text");
}

} // namespace

} // namespace vornadel::test

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace vornadel;
    using namespace vornadel::test;
    static const MemoryFile file;

    FuzzInput input(data, size);
    const std::uint32_t begin = input.word();
    const std::uint32_t end = input.word();
    IdentityTexts texts;
    for (std::string* text : {&texts.vid, &texts.sspid, &texts.hspid, &texts.version,
                              &texts.manufacturer, &texts.product, &texts.serial}) {
        *text = input.text();
    }
    const std::string containerId = input.text();
    const auto rest = input.rest();
    const Bytes bytes(rest.begin(), rest.end());

    file.write(bytes);
    FwImage image;
    const bool loaded = FwImage_LoadFile(image, file.path());
    require(loaded == image.loaded, "the loader tells what the record tells");
    requireWellFormed(image, bytes);
    FwImage parsed;
    require(FwImage_Parse(parsed, bytes.data(), static_cast<std::int32_t>(bytes.size())) == loaded,
            "a file and its bytes are parsed alike");
    if (!loaded) {
        require(!FwImage_EditIds(image, texts.vid, texts.sspid, texts.hspid) &&
                    FwImage_EditTexts(image, texts.manufacturer, texts.product, texts.serial,
                                      containerId) == 0 &&
                    bytesOf(image) == bytes,
                "an image that is not loaded is not edited");
        return 0;
    }
    requireTextsOf(image);
    requireHexOf(image, begin, end);
    editIds(image, texts);
    editTexts(image, texts, containerId);
    setIds(image, texts);
    editTexts(
        image,
        {"", "", "", "", image.product.data(), image.serial.data(), image.manufacturer.data()},
        image.containerIdText.data());
    requireHexOf(image, end, begin);
    requireWellFormed(image, bytesOf(image));
    return 0;
}
