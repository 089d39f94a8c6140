#include "firmware/ImageDiff.h"
#include "firmware/FieldEdit.h"
#include "tests/firmware/ImageBytes.h"

#include <gmock/gmock.h>

namespace vornadel::test
{

namespace
{

class ImageDiff : public testing::Test
{
protected:
    static constexpr std::size_t kBlock = 0x100;

    ImageDiff()
    {
        EXPECT_TRUE(parse(before, bytes));
        EXPECT_TRUE(parse(after, bytes));
    }

    /// "name: before > after", one a difference, and then the ranges that no field explains.
    std::vector<std::string> differences()
    {
        std::vector<std::string> texts;
        for (const FieldDifference& each : FwImage_FieldDifferences(before, after)) {
            texts.push_back(std::string(each.name) + ": " + each.before + " > " + each.after);
        }
        const auto whole = [](const FwImage& image) {
            return std::span<const std::uint8_t>(image.data.get(),
                                                 static_cast<std::size_t>(image.size));
        };
        ComparedBits compared(bytes.size(), 0xFF);
        FwImage_OmitFields(compared, before, after);
        for (const DifferentRange& range : differentRanges(whole(before), whole(after), compared)) {
            texts.push_back(std::to_string(range.begin) + '-' + std::to_string(range.end) + ": " +
                            std::to_string(range.bytes));
        }
        return texts;
    }

    const ByteList bytes = imageWithBlock(0x400, kBlock);
    FwImage before;
    FwImage after;
};

using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(ImageDiff, OfEqualImagesIsEmpty) { EXPECT_THAT(differences(), IsEmpty()); }

TEST_F(ImageDiff, NamesEveryFieldAndNothingElse)
{
    using enum IdentityField;
    FwImage_EditFields(after, std::vector<FieldEdit>{{Vid, "abcd"},
                                                     {Serial, "43"},
                                                     {ContainerId, "{" + std::string(36, '0')}});
    after.version[1] = 0x06;
    EXPECT_THAT(differences(),
                ElementsAre("version: 0105 > 0106", "vid: 1209 > ABCD", "serial: 42 > 43",
                            "container-id: {00112233-4455-6677-8899-aabbccddeeff} > {" +
                                std::string(36, '0'),
                            "changed: none > ids serial container-id"));
}

TEST_F(ImageDiff, NamesTheAddressesOfWhatNoFieldExplains)
{
    after.descriptor[10] = 0x81; // the ids' change flag, and a bit that is none
    after.strings[1] = 9;        // the type of a string, which no text shows
    after.data[0] = 1;           // three ranges: 15 equal bytes join, 16 do not
    after.data[16] = 1;
    after.data[33] = after.data[34] = 1;
    EXPECT_THAT(differences(), ElementsAre("changed: none > ids", "0-17: 2", "33-35: 2",
                                           "266-267: 1", "300-301: 1"));
}

TEST_F(ImageDiff, TakesWhatOneImageIsLongerByAsDifferent)
{
    ASSERT_TRUE(parse(after, ByteList(bytes.begin(), bytes.end() - 0x100)));
    EXPECT_THAT(differences(), ElementsAre("768-1024: 256"));
}

TEST_F(ImageDiff, ComparesOnlyBytesIfAnImageHasNoBlockOrAtAnotherPlace)
{
    const ByteList blank(bytes.size(), 0xEE);
    EXPECT_FALSE(parse(after, blank));
    EXPECT_THAT(differences(), ElementsAre("0-1024: 1023")) << "one is the same";
    ASSERT_TRUE(parse(after, imageWithBlock(0x400, 0x200)));
    const std::vector<std::string> found = differences();
    EXPECT_THAT(found, testing::Contains("block: 0x0100 > 0x0200"));
    EXPECT_THAT(found, testing::Contains("249-264: 9")) << "its fields are no longer explained";
}

} // namespace

} // namespace vornadel::test
