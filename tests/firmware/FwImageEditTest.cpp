#include "firmware/ImageState.h"
#include "tests/firmware/ImageBytes.h"

namespace vornadel::test
{
namespace
{

class FwImageEdit : public ::testing::Test
{
protected:
    FwImageEdit() { EXPECT_TRUE(parse(m_image, imageWithBlock(512, 256))); }

    ByteList area() const { return bytesAt(m_image.strings, 35); }
    ByteList id() const { return bytesAt(m_image.containerId, 16); }

    /// The image without its string area and Container ID, which no edit may touch.
    ByteList rest() const
    {
        ByteList bytes = bytesAt(m_image.data.get(), 512);
        bytes.erase(bytes.begin() + 256 + 43, bytes.begin() + 256 + 94);
        return bytes;
    }

    FwImage m_image;
};

using SetStrings = FwImageEdit;
using SetContainerId = FwImageEdit;

TEST_F(SetStrings, WritesThreeDescriptorsAndZerosBehind)
{
    const ByteList before = rest();
    const ByteList idBefore = id();
    EXPECT_TRUE(FwImage_SetStrings(m_image, "ab", "", "xyz"));
    ByteList wanted{4, 3, 'a', 'b', 2, 3, 5, 3, 'x', 'y', 'z'};
    wanted.resize(35, 0);
    EXPECT_EQ(area(), wanted);
    EXPECT_EQ(rest(), before);
    EXPECT_EQ(id(), idBefore);
    EXPECT_EQ(textOf(m_image.manufacturer), "ab");
    EXPECT_EQ(textOf(m_image.product), "");
    EXPECT_EQ(textOf(m_image.serial), "xyz");
}

TEST_F(SetStrings, FillsTheAreaWith29Characters)
{
    EXPECT_TRUE(FwImage_SetStrings(m_image, "0123456789", "ABCDEFGHIJ", "abcdefghi"));
    const std::string wanted = "\x0C\x03"
                               "0123456789"
                               "\x0C\x03"
                               "ABCDEFGHIJ"
                               "\x0B\x03"
                               "abcdefghi";
    EXPECT_EQ(area(), ByteList(wanted.begin(), wanted.end()));
    EXPECT_TRUE(FwImage_SetStrings(m_image, std::string(29, 'm'), "", ""));
    const std::string one = "\x1F\x03" + std::string(29, 'm') + "\x02\x03\x02\x03";
    EXPECT_EQ(area(), ByteList(one.begin(), one.end()));
}

TEST_F(SetStrings, WipesTheAreaWhenTheyAreTooLong)
{
    const ByteList before = rest();
    const ByteList idBefore = id();
    EXPECT_FALSE(FwImage_SetStrings(m_image, "0123456789", "0123456789", "0123456789"));
    EXPECT_EQ(area(), ByteList(35, 0));
    EXPECT_EQ(rest(), before);
    EXPECT_EQ(id(), idBefore);
    EXPECT_EQ(textOf(m_image.manufacturer), "Maker");
    EXPECT_EQ(textOf(m_image.product), "Hub");
    EXPECT_EQ(textOf(m_image.serial), "42");
}

TEST_F(SetStrings, TakesTheRecordsOwnTexts)
{
    EXPECT_TRUE(FwImage_SetStrings(m_image, m_image.serial.data(), m_image.manufacturer.data(),
                                   m_image.product.data()));
    EXPECT_EQ(textOf(m_image.manufacturer), "42");
    EXPECT_EQ(textOf(m_image.product), "Maker");
    EXPECT_EQ(textOf(m_image.serial), "Hub");
}

TEST_F(SetStrings, LeavesThe64BytesOfAnUnchangedTextAlone)
{
    EXPECT_TRUE(FwImage_SetStrings(m_image, "M", "Hub", "42"));
    const FwText before = m_image.manufacturer;
    EXPECT_TRUE(FwImage_SetStrings(m_image, "M", "Hub 2", "42"));
    EXPECT_EQ(m_image.manufacturer, before);
}

TEST_F(SetStrings, ChangesNothingInAnImageWithoutABlock)
{
    EXPECT_FALSE(parse(m_image, ByteList(512, 0xFF)));
    EXPECT_FALSE(FwImage_SetStrings(m_image, "a", "b", "c"));
    EXPECT_FALSE(FwImage_SetContainerId(m_image, "{00}"));
    EXPECT_EQ(bytesAt(m_image.data.get(), 512), ByteList(512, 0xFF));
    EXPECT_EQ(textOf(m_image.manufacturer), "Maker");
    EXPECT_EQ(textOf(m_image.containerIdText), "{00112233-4455-6677-8899-aabbccddeeff}");
}

TEST_F(SetContainerId, StoresTheBytesAndKeepsTheTextAsTyped)
{
    const ByteList before = rest();
    const ByteList areaBefore = area();
    const std::string typed = "{00112233-4455-6677-8899-AABBCCDDEEFF}";
    std::fill_n(m_image.containerId, 16, std::uint8_t{0xEE});
    EXPECT_TRUE(FwImage_SetContainerId(m_image, typed));
    EXPECT_EQ(id(), (ByteList{0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88, 0x99, 0xAA,
                              0xBB, 0xCC, 0xDD, 0xEE, 0xFF}));
    EXPECT_EQ(textOf(m_image.containerIdText), typed);
    EXPECT_EQ(rest(), before);
    EXPECT_EQ(area(), areaBefore);

    ASSERT_TRUE(FwImage_Parse(m_image, m_image.data.get(), m_image.size));
    EXPECT_EQ(textOf(m_image.containerIdText), "{00112233-4455-6677-8899-aabbccddeeff}");
}

TEST_F(SetContainerId, CountsMissingDigitsAsZero)
{
    EXPECT_TRUE(FwImage_SetContainerId(m_image, "{123}"));
    ByteList wanted(16, 0);
    wanted[0] = 0x12;
    wanted[1] = 0x30;
    EXPECT_EQ(id(), wanted);
    EXPECT_TRUE(FwImage_SetContainerId(m_image, ""));
    EXPECT_EQ(id(), ByteList(16, 0));
    EXPECT_EQ(textOf(m_image.containerIdText), "");
}

TEST_F(SetContainerId, TakesLettersPastFAsSixteenAndMore)
{
    EXPECT_TRUE(FwImage_SetContainerId(m_image, "0g g0 zz ZZ 1z"));
    const ByteList first = bytesAt(m_image.containerId, 5);
    // 16; 16 * 16, 35 * 16 + 35 and so on, cut to 8 bits
    EXPECT_EQ(first, (ByteList{0x10, 0x00, 0x53, 0x53, 0x33}));
}

TEST_F(SetContainerId, IgnoresDigitsBeyondThe32nd)
{
    const ByteList before = rest();
    EXPECT_TRUE(FwImage_SetContainerId(m_image, std::string(32, 'a') + std::string(1000, '1')));
    EXPECT_EQ(id(), ByteList(16, 0xAA));
    EXPECT_EQ(rest(), before);
    EXPECT_EQ(textOf(m_image.containerIdText), std::string(32, 'a') + std::string(31, '1'));
}

TEST_F(SetContainerId, TakesTheRecordsOwnText)
{
    EXPECT_TRUE(FwImage_SetContainerId(m_image, m_image.containerIdText.data() + 3));
    EXPECT_EQ(textOf(m_image.containerIdText), "112233-4455-6677-8899-aabbccddeeff}");
    EXPECT_EQ(id()[0], 0x11);
}

TEST(ImageState, BringsBackEveryByteOfTheRecord)
{
    FwImage image;
    ByteList bytes = imageWithBlock(512, 256);
    putAt(bytes, 0, {0xAA, 0x55}); // what a search would find without the other signature
    ASSERT_TRUE(parse(image, bytes));
    image.descriptor[0] = 0; // an edit may do that
    FwText_Set(image.containerIdText, "typed");
    const ImageState state = FwImage_State(image);
    ASSERT_TRUE(parse(image, imageWithBlock(300, 44)));
    ASSERT_TRUE(FwImage_Restore(image, state));
    EXPECT_EQ(FwImage_State(image), state);
    EXPECT_EQ(image.version, image.data.get() + 249);
    EXPECT_EQ(image.containerId, image.data.get() + 256 + 78);

    ASSERT_FALSE(parse(image, ByteList(300, 0)));
    const ImageState none = FwImage_State(image);
    ASSERT_TRUE(FwImage_Restore(image, state));
    ASSERT_TRUE(FwImage_Restore(image, none));
    expectEmpty(image);
    EXPECT_EQ(image.size, 300);
}

} // namespace
} // namespace vornadel::test
