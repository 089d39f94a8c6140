#include "tests/firmware/ImageBytes.h"

#include <type_traits>

namespace vornadel::test
{
namespace
{

static_assert(!std::is_copy_constructible_v<FwImage> && !std::is_move_constructible_v<FwImage>);

constexpr std::array<std::array<std::uint8_t, 2>, 3> kMarks{
    {{0xAA, 0x55}, {0x3C, 0xC3}, {0x55, 0xAA}}};

TEST(FwImageParse, LocatesEveryField)
{
    const ByteList bytes = imageWithBlock(1024, 512);
    FwImage image;
    LastError = 0;
    ASSERT_TRUE(parse(image, bytes));
    EXPECT_EQ(LastError, 0);
    EXPECT_TRUE(image.loaded);
    EXPECT_EQ(image.size, 1024);
    EXPECT_EQ(bytesAt(image.data.get(), 1024), bytes);
    std::uint8_t* const block = image.data.get() + 512;
    EXPECT_EQ(image.descriptor, block);
    EXPECT_EQ(image.strings, block + 43);
    EXPECT_EQ(image.containerId, block + 78);
    EXPECT_EQ(image.stringsLength, 35U);
    EXPECT_EQ(image.containerIdLength, 16U);
    EXPECT_EQ(bytesAt(image.vid, 2), (ByteList{0x12, 0x09}));
    EXPECT_EQ(bytesAt(image.sspid, 2), (ByteList{0x33, 0x00}));
    EXPECT_EQ(bytesAt(image.hspid, 2), (ByteList{0x22, 0x01}));
    EXPECT_EQ(image.version, block - 7);
    EXPECT_EQ(bytesAt(image.version, 2), (ByteList{0x01, 0x05}));
    EXPECT_EQ(textOf(image.manufacturer), "Maker");
    EXPECT_EQ(textOf(image.product), "Hub");
    EXPECT_EQ(textOf(image.serial), "42");
    EXPECT_EQ(textOf(image.containerIdText), "{00112233-4455-6677-8899-aabbccddeeff}");
}

TEST(FwImageParse, HasAVersionOnlyWhenSevenBytesComeBeforeTheBlock)
{
    FwImage image;
    ASSERT_TRUE(parse(image, imageWithBlock(262, 6)));
    EXPECT_EQ(image.version, nullptr);
    EXPECT_EQ(FwImage_IdText(image.version), "");
    ASSERT_TRUE(parse(image, imageWithBlock(263, 7)));
    EXPECT_EQ(image.version, image.data.get());
}

TEST(FwImageParse, RefusesA255ByteImageWithCodeSeven)
{
    ByteList bytes = imageWithBlock(256, 0);
    bytes.pop_back();
    FwImage image;
    LastError = 0;
    EXPECT_FALSE(parse(image, bytes));
    EXPECT_EQ(LastError, 7);
    expectEmpty(image);
    EXPECT_EQ(image.size, 255);
    EXPECT_EQ(bytesAt(image.data.get(), 255), bytes);
    LastError = 0;
    EXPECT_FALSE(parse(image, {0x55}));
    EXPECT_EQ(LastError, 7);
}

TEST(FwImageParse, RefusesNoBytesWithCodeSix)
{
    const std::uint8_t byte = 0x55;
    for (const std::int32_t length : {0, -1}) {
        FwImage image;
        ASSERT_TRUE(parse(image, imageWithBlock(256, 0)));
        LastError = 0;
        EXPECT_FALSE(FwImage_Parse(image, &byte, length));
        EXPECT_EQ(LastError, 6);
        expectEmpty(image);
        EXPECT_EQ(image.size, length);
        EXPECT_EQ(image.data, nullptr);
    }
    FwImage image;
    EXPECT_FALSE(FwImage_Parse(image, nullptr, 256));
    expectEmpty(image);
    EXPECT_EQ(image.size, 0);
}

TEST(FwImageParse, LeavesLastErrorAndTheTextsWhenThereIsNoBlock)
{
    FwImage image;
    ASSERT_TRUE(parse(image, imageWithBlock(512, 256)));
    LastError = 12;
    EXPECT_FALSE(parse(image, ByteList(512, 0xFF)));
    EXPECT_EQ(LastError, 12);
    expectEmpty(image);
    EXPECT_EQ(image.size, 512);
    EXPECT_EQ(bytesAt(image.data.get(), 512), ByteList(512, 0xFF));
    EXPECT_EQ(textOf(image.manufacturer), "Maker");
    EXPECT_EQ(textOf(image.containerIdText), "{00112233-4455-6677-8899-aabbccddeeff}");
}

TEST(FwImageParse, KnowsThreeSignaturesAndNoOthers)
{
    for (unsigned word = 0; word < 0x10000; ++word) {
        const std::array<std::uint8_t, 2> mark{static_cast<std::uint8_t>(word >> 8),
                                               static_cast<std::uint8_t>(word & 0xFF)};
        ByteList bytes(256, 0);
        putAt(bytes, 0, {mark[0], mark[1]});
        FwImage image;
        const bool known = std::find(kMarks.begin(), kMarks.end(), mark) != kMarks.end();
        ASSERT_EQ(parse(image, bytes), known) << std::hex << word;
    }
}

TEST(FwImageParse, SearchesA300ByteImageOnlyAtOffset44)
{
    FwImage image;
    ByteList bytes(300, 0);
    putAt(bytes, 0, {0x55, 0xAA});
    EXPECT_FALSE(parse(image, bytes));
    putAt(bytes, 44, {0x3C, 0xC3});
    ASSERT_TRUE(parse(image, bytes));
    EXPECT_EQ(image.descriptor, image.data.get() + 44);
}

TEST(FwImageParse, TakesTheBlockNearestTheEnd)
{
    ByteList bytes = imageWithBlock(512, 0);
    putAt(bytes, 256, {0xAA, 0x55});
    FwImage image;
    ASSERT_TRUE(parse(image, bytes));
    EXPECT_EQ(image.descriptor, image.data.get() + 256);
}

TEST(FwImageParse, IgnoresSignaturesBetweenTheCandidates)
{
    ByteList bytes(32768, 0);
    for (std::size_t offset = 0; offset + 1 < bytes.size(); ++offset) {
        if (offset % 256 != 0 && offset % 256 != 255) {
            bytes[offset] = offset % 2 == 0 ? 0x55 : 0xAA;
        }
    }
    FwImage image;
    EXPECT_FALSE(parse(image, bytes));
}

TEST(FwImageParse, KeepsEarlierTextsWhenTheStringAreaBeginsWithZero)
{
    FwImage image;
    ASSERT_TRUE(parse(image, imageWithBlock(256, 0)));
    ByteList bytes = imageWithBlock(256, 0);
    bytes[43] = 0;
    bytes[78] = 0xFF;
    ASSERT_TRUE(parse(image, bytes));
    EXPECT_EQ(textOf(image.manufacturer), "Maker");
    EXPECT_EQ(textOf(image.product), "Hub");
    EXPECT_EQ(textOf(image.serial), "42");
    EXPECT_EQ(textOf(image.containerIdText), "{ff112233-4455-6677-8899-aabbccddeeff}");
}

TEST(FwImageParse, TakesBytesFromItsOwnImage)
{
    FwImage image;
    const ByteList bytes = imageWithBlock(1024, 512);
    ASSERT_TRUE(parse(image, bytes));
    ASSERT_TRUE(FwImage_Parse(image, image.data.get() + 256, 512));
    EXPECT_EQ(image.size, 512);
    EXPECT_EQ(bytesAt(image.data.get(), 512), ByteList(bytes.begin() + 256, bytes.begin() + 768));
    EXPECT_EQ(image.descriptor, image.data.get() + 256);
}

TEST(FwImageRelease, EmptiesAllButTheTexts)
{
    FwImage image;
    ASSERT_TRUE(parse(image, imageWithBlock(512, 256)));
    FwImage_Release(image);
    expectEmpty(image);
    EXPECT_EQ(image.size, 0);
    EXPECT_EQ(image.data, nullptr);
    EXPECT_EQ(textOf(image.product), "Hub");
    FwImage_Release(image);
    expectEmpty(image);
}

using Three = std::array<std::string, 3>;

/// The texts that an area leaves in a record with "old m", "old p" and "old s".
Three textsAfter(const ByteList& area)
{
    FwText texts[] = {{"old m"}, {"old p"}, {"old s"}};
    FwImage_ParseStrings(area.data(), static_cast<std::uint32_t>(area.size()), texts[0], texts[1],
                         texts[2]);
    return {textOf(texts[0]), textOf(texts[1]), textOf(texts[2])};
}

/// String descriptors, followed by more bytes.
ByteList areaOf(std::initializer_list<std::string_view> strings, const ByteList& more = {})
{
    ByteList area;
    for (const std::string_view text : strings) {
        const ByteList descriptor = descriptorOf(text);
        area.insert(area.end(), descriptor.begin(), descriptor.end());
    }
    area.insert(area.end(), more.begin(), more.end());
    return area;
}

TEST(FwImageParseStrings, ReadsThreeDescriptorsAndNoFourth)
{
    EXPECT_EQ(textsAfter(areaOf({"a", "bc", "def", "ghij"})), (Three{"a", "bc", "def"}));
    EXPECT_EQ(textsAfter(areaOf({"", "x", ""})), (Three{"", "x", ""}));
    EXPECT_EQ(textsAfter({3, 0x7F, 'm', 3, 0, 'p', 3, 0xFF, 's'}), (Three{"m", "p", "s"}))
        << "the type byte is not checked";
}

TEST(FwImageParseStrings, KeepsTheTextsThatHaveNoDescriptor)
{
    const Three none{"old m", "old p", "old s"};
    EXPECT_EQ(textsAfter({}), none);
    EXPECT_EQ(textsAfter(areaOf({"a"}, ByteList(32, 0))), (Three{"a", "old p", "old s"}));
    EXPECT_EQ(textsAfter({1, 3, 'x', 3, 3, 'y'}), none) << "a length of one";
    EXPECT_EQ(textsAfter(areaOf({"a"}, {1, 3, 3, 'z'})), (Three{"a", "old p", "old s"}));
}

TEST(FwImageParseStrings, StopsAtADescriptorThatLeavesTheArea)
{
    ByteList area(35, 'x');
    area[0] = 36;
    EXPECT_EQ(textsAfter(area), (Three{"old m", "old p", "old s"}));
    area[0] = 35;
    EXPECT_EQ(textsAfter(area), (Three{std::string(33, 'x'), "old p", "old s"}));
    area[0] = 10;
    area[10] = 26;
    EXPECT_EQ(textsAfter(area), (Three{std::string(8, 'x'), "old p", "old s"}));
    EXPECT_EQ(textsAfter({4, 3, 'y', 'z'}), (Three{"yz", "old p", "old s"}));
}

TEST(FwImageParseStrings, CutsATextThatTheRecordCannotHold)
{
    EXPECT_EQ(textsAfter(areaOf({std::string(253, 'x'), "p", std::string(64, 's')})),
              (Three{std::string(63, 'x'), "p", std::string(63, 's')}));
}

} // namespace
} // namespace vornadel::test
