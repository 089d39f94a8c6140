// Identity fields by name. That the bytes are the window's is shown beside the window's tests.

#include "firmware/FieldEdit.h"
#include "tests/firmware/ImageBytes.h"

#include <set>

namespace vornadel::test
{

namespace
{

class FieldEdits : public testing::Test
{
protected:
    static constexpr std::size_t kBlock = 0x100;

    FieldEdits() { EXPECT_TRUE(parse(image, bytes)); }

    FieldFlaw flaw(const std::vector<FieldEdit>& edits)
    {
        return FwImage_FindEditFlaw(image, edits, culprit);
    }
    std::vector<std::uint8_t> all() const { return bytesAt(image.data.get(), bytes.size()); }

    const ByteList bytes = imageWithBlock(0x400, kBlock);
    FwImage image;
    std::size_t culprit = 0;
};

TEST_F(FieldEdits, FindTheirFieldsByName)
{
    EXPECT_EQ(identityFieldNamed("vid"), IdentityField::Vid);
    EXPECT_EQ(identityFieldNamed("container-id"), IdentityField::ContainerId);
    EXPECT_FALSE(identityFieldNamed("VID"));
    EXPECT_FALSE(identityFieldNamed("version"));
}

TEST_F(FieldEdits, AreRefusedWithTheirReason)
{
    using enum IdentityField;
    const std::string id = "00112233-4455-6677-8899-aabbccddeeFF";
    const struct {
        FieldEdit edit;
        FieldFlaw flaw;
    } rows[] = {
        {{Vid, "12aF"}, FieldFlaw::None},
        {{Vid, "12a"}, FieldFlaw::NotAnId},
        {{Sspid, "12a34"}, FieldFlaw::NotAnId},
        {{Hspid, "12ag"}, FieldFlaw::NotAnId},
        {{ContainerId, id}, FieldFlaw::None},
        {{ContainerId, '{' + id + '}'}, FieldFlaw::None},
        {{ContainerId, '{' + id}, FieldFlaw::NotAContainerId},
        {{ContainerId, id + "0"}, FieldFlaw::NotAContainerId},
        {{ContainerId, "0" + id.substr(1, 7) + "0" + id.substr(9)}, FieldFlaw::NotAContainerId},
        {{ContainerId, "g" + id.substr(1)}, FieldFlaw::NotAContainerId},
        {{Serial, ""}, FieldFlaw::None},
        {{Serial, std::string(21, 's')}, FieldFlaw::None}, // with Maker and Hub: 29
        {{Serial, std::string(22, 's')}, FieldFlaw::TooLong},
        {{Serial, "\xE9"}, FieldFlaw::NotUtf8},
        {{Serial, "\xC3"}, FieldFlaw::NotUtf8},
        {{Serial, "\xC0\x80"}, FieldFlaw::NotUtf8},
        {{Serial, "\xED\xA0\x80"}, FieldFlaw::NotUtf8},
        {{Serial, "\xF4\x90\x80\x80"}, FieldFlaw::NotUtf8},
        {{Serial, "\xF0\x9F\x98\x80"}, FieldFlaw::None},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(flaw({{Product, "Hub"}, row.edit}), row.flaw) << row.edit.text;
        if (row.flaw != FieldFlaw::None && row.flaw != FieldFlaw::TooLong) {
            EXPECT_EQ(culprit, 1U) << row.edit.text;
        }
    }
    EXPECT_EQ(all(), bytes);
}

TEST_F(FieldEdits, CountTheStringsAsTheyWillBe)
{
    const std::vector<FieldEdit> edits = {{IdentityField::Product, std::string(29, 'p')},
                                          {IdentityField::Manufacturer, ""},
                                          {IdentityField::Serial, ""}};
    EXPECT_EQ(flaw(edits), FieldFlaw::None);
    FwImage_EditFields(image, edits);
    FwImage_RebuildStrings(image);
    EXPECT_EQ(bytesAt(image.strings, 5), (ByteList{2, 3, 31, 3, 'p'}));
    EXPECT_EQ(image.descriptor[42], 0x0E);
}

TEST_F(FieldEdits, NeedAnImageThatCanBeSaved)
{
    ASSERT_TRUE(parse(image, imageWithBlock(0x100, 0)));
    EXPECT_EQ(flaw({}), FieldFlaw::NoVersion);
    ByteList longString = bytes;
    longString[kBlock + 43] = 32; // a single string of 30 characters
    std::fill_n(longString.begin() + kBlock + 45, 30, std::uint8_t{'m'});
    ASSERT_TRUE(parse(image, longString));
    FwText_Set(image.product, {});
    FwText_Set(image.serial, {});
    EXPECT_EQ(flaw({{IdentityField::Vid, "1234"}}), FieldFlaw::TooLong);
}

TEST_F(FieldEdits, KeepOneByteACharacterWhereTheOldTextHasIt)
{
    ByteList latin = bytes;
    latin[kBlock + 45] = 0xE9;
    ASSERT_TRUE(parse(image, latin));
    const struct {
        std::string text;
        std::string stored;
    } rows[] = {{"M\xC3\xBC", "M\xFC"}, {"\xE2\x82\xAC\xC3\xBC", "\xE2\x82\xAC\xC3\xBC"}};
    for (const auto& row : rows) {
        ASSERT_TRUE(parse(image, latin));
        FwImage_EditFields(image, std::vector<FieldEdit>{{IdentityField::Manufacturer, row.text}});
        EXPECT_EQ(textOf(image.manufacturer), row.stored);
    }
}

TEST(NewContainerIds, AreRandomOnesAndDiffer)
{
    std::set<std::string> seen;
    for (int i = 0; i < 50; ++i) {
        const std::string id = newContainerId();
        ASSERT_EQ(id.size(), 38U);
        EXPECT_EQ(id[15], '4') << id;
        EXPECT_NE(std::string("89ab").find(id[20]), std::string::npos) << id;
        seen.insert(id);
    }
    EXPECT_EQ(seen.size(), 50U);
}

} // namespace

} // namespace vornadel::test
