#include "firmware/IdentityEdit.h"
#include "tests/firmware/ImageBytes.h"

#include <gtest/gtest.h>

#include <string>

namespace vornadel::test
{

namespace
{

constexpr std::size_t kBlock = 256;
constexpr std::size_t kLength = 1024;

class IdentityEdit : public testing::Test
{
protected:
    IdentityEdit() { parse(m_image, imageWithBlock(kLength, kBlock)); }

    std::uint8_t at(std::size_t offset) const { return m_image.descriptor[offset]; }
    bool editIds(const char* vid, const char* sspid, const char* hspid)
    {
        return FwImage_EditIds(m_image, vid, sspid, hspid);
    }
    std::uint8_t editTexts(const std::string& manufacturer, const std::string& product,
                           const std::string& serial, const std::string& containerId = kContainerId)
    {
        return FwImage_EditTexts(m_image, manufacturer, product, serial, containerId);
    }
    ByteList ids() const { return bytesAt(m_image.vid, 6); }
    ByteList all() const { return bytesAt(m_image.data.get(), kLength); }

    static constexpr const char* kContainerId = "{00112233-4455-6677-8899-aabbccddeeff}";
    FwImage m_image;
};

TEST_F(IdentityEdit, WritesFourDigitsHighByteFirst)
{
    EXPECT_TRUE(editIds("1a2B", "C0d1", "0000"));
    EXPECT_EQ(ids(), (ByteList{0x1A, 0x2B, 0xC0, 0xD1, 0, 0}));
    editIds("1", "12", "12345");
    EXPECT_EQ(ids(), (ByteList{0x10, 0x00, 0x12, 0x00, 0x12, 0x34}));
}

TEST_F(IdentityEdit, SetsTheIdFlagWhenAnIdIsCleared)
{
    EXPECT_TRUE(editIds("1209", "", "2201"));
    EXPECT_EQ(ids(), (ByteList{0x12, 0x09, 0, 0, 0x22, 0x01}));
    EXPECT_EQ(at(10), 0x01);
}

TEST_F(IdentityEdit, SetsNoFlagWhereTheSameValueIsTyped)
{
    EXPECT_FALSE(editIds("1209", "3300", "2201"));
    EXPECT_EQ(at(10), 0);
    EXPECT_EQ(all(), imageWithBlock(kLength, kBlock));
}

TEST_F(IdentityEdit, NeverClearsAFlagAndLeavesItsNeighboursAlone)
{
    m_image.descriptor[10] = 0xFE;
    EXPECT_TRUE(editIds("1208", "3300", "2201"));
    EXPECT_EQ(at(10), 0xFF);
    EXPECT_TRUE(editIds("1209", "3300", "2201"));
    EXPECT_FALSE(editIds("1209", "3300", "2201"));
    EXPECT_EQ(at(10), 0xFF);
}

TEST_F(IdentityEdit, JoinsLettersPastFWithAnOrAndKeepsEightBits)
{
    // "zz": 35 * 16 | 35 = 0x233. A sum would give 0x53.
    editIds("zzgG", "-1x-",
            "\xC3\xBC"
            "12");
    EXPECT_EQ(ids(), (ByteList{0x33, 0x10, 0x01, 0x10, 0x00, 0x12}));
}

TEST_F(IdentityEdit, SetsTheFlagOfEachTextThatChanged)
{
    EXPECT_EQ(editTexts("Maker", "Hub", "43"), kSerialChanged);
    EXPECT_EQ(at(42), 0x02);
    EXPECT_EQ(editTexts("Maker", "Hubs", "43"), kProductChanged);
    EXPECT_EQ(at(42), 0x06);
    EXPECT_EQ(editTexts("Make", "Hubs", "43"), kManufacturerChanged);
    EXPECT_EQ(at(42), 0x0E);
    EXPECT_EQ(editTexts("Make", "Hubs", "43", "{ff12"), kContainerIdChanged);
    EXPECT_EQ(at(42), 0x0F);
    EXPECT_EQ(bytesAt(m_image.containerId, 3), (ByteList{0xFF, 0x12, 0}));
    EXPECT_EQ(editTexts("Maker", "Hub", "43", "{fe"),
              kManufacturerChanged | kProductChanged | kContainerIdChanged);
    EXPECT_EQ(editTexts("Make", "Hubs", "43", "{ff"),
              kManufacturerChanged | kProductChanged | kContainerIdChanged);
    EXPECT_EQ(bytesAt(m_image.strings, 16),
              (ByteList{6, 3, 'M', 'a', 'k', 'e', 6, 3, 'H', 'u', 'b', 's', 4, 3, '4', '3'}));
}

TEST_F(IdentityEdit, SetsNoFlagWhereTheTextsAreTheSame)
{
    EXPECT_EQ(editTexts("Maker", "Hub", "42"), 0);
    EXPECT_EQ(all(), imageWithBlock(kLength, kBlock));
}

TEST_F(IdentityEdit, WritesTheIdsAndTheVersionOfASave)
{
    FwImage_SetIds(m_image, {"1A2B", "3C4D", "5E6F", "7890", "", "", ""});
    EXPECT_EQ(ids(), (ByteList{0x1A, 0x2B, 0x3C, 0x4D, 0x5E, 0x6F}));
    EXPECT_EQ(bytesAt(m_image.version, 2), (ByteList{0x78, 0x90}));
}

TEST_F(IdentityEdit, SetsTheContainerFlagWhereOnlyTheCaseChanged)
{
    EXPECT_EQ(editTexts("Maker", "Hub", "42", "{00112233-4455-6677-8899-AABBCCDDEEFF}"),
              kContainerIdChanged);
    EXPECT_EQ(at(42), 0x01);
    EXPECT_EQ(bytesAt(m_image.containerId, 16),
              bytesAt(imageWithBlock(kLength, kBlock).data() + kBlock + 78, 16));
    EXPECT_EQ(textOf(m_image.containerIdText), "{00112233-4455-6677-8899-AABBCCDDEEFF}");
}

TEST_F(IdentityEdit, WipesTheStringsThatAreTooLongAndBringsThemBack)
{
    const std::string tooLong(39, 'x');
    EXPECT_EQ(editTexts(tooLong, "Hub", "42"), kManufacturerChanged);
    EXPECT_EQ(bytesAt(m_image.strings, 35), ByteList(35, 0));
    EXPECT_EQ(textOf(m_image.manufacturer), tooLong) << "the copy keeps what was typed";
    EXPECT_EQ(editTexts(tooLong.substr(0, 25), "Hub", "42"), kManufacturerChanged);
    EXPECT_EQ(bytesAt(m_image.strings, 35), ByteList(35, 0)) << "30 are still too many";
    editTexts(tooLong.substr(0, 24), "Hub", "42");
    EXPECT_EQ(m_image.strings[0], 26);
    EXPECT_EQ(m_image.strings[34], '2') << "29 fill the area";
}

TEST_F(IdentityEdit, TouchesNothingBesideItsFields)
{
    editIds("FFFF", "FFFF", "FFFF");
    editTexts("Other", "Words", "7", "{ff}");
    ByteList expected = imageWithBlock(kLength, kBlock);
    for (std::size_t i = 0; i < kLength; ++i) {
        const std::size_t offset = i - kBlock;
        const bool mayDiffer = (offset >= kIdsBegin && offset < kIdsEnd) || offset == 10 ||
                               offset == 42 || (offset >= kTextsBegin && offset < kTextsEnd);
        if (!mayDiffer) {
            EXPECT_EQ(all()[i], expected[i]) << i;
        }
    }
}

TEST(IdentityTexts, FitWithFourDigitsAndTwentyNineCharacters)
{
    const IdentityTexts good{
        "1209", "0001", "0002", "0100", std::string(20, 'm'), std::string(9, 'p'), ""};
    EXPECT_TRUE(good.fit());
    for (std::string IdentityTexts::*id : {&IdentityTexts::vid, &IdentityTexts::sspid,
                                           &IdentityTexts::hspid, &IdentityTexts::version}) {
        for (const char* text : {"", "120", "12090"}) {
            IdentityTexts bad = good;
            bad.*id = text;
            EXPECT_FALSE(bad.fit()) << text;
        }
    }
    for (std::string IdentityTexts::*text :
         {&IdentityTexts::manufacturer, &IdentityTexts::product, &IdentityTexts::serial}) {
        IdentityTexts bad = good;
        bad.*text += 'x';
        EXPECT_FALSE(bad.fit());
    }
}

TEST(IdentityEditWithoutAnImage, DoesNothing)
{
    FwImage image;
    EXPECT_FALSE(FwImage_EditIds(image, "1209", "0001", "0002"));
    EXPECT_EQ(FwImage_EditTexts(image, "a", "b", "c", "d"), 0);
    EXPECT_EQ(textOf(image.manufacturer), "");
    FwImage_SetIdText(image.version, "0100");
    expectEmpty(image);
}

} // namespace

} // namespace vornadel::test
