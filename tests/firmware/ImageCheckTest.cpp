#include "firmware/ImageCheck.h"

#include "tests/firmware/ImageBytes.h"

#include <gtest/gtest.h>

namespace vornadel::test
{
namespace
{

ImageFlaw flawOf(const ByteList& bytes)
{
    FwImage image;
    EXPECT_TRUE(parse(image, bytes));
    return FwImage_FindFlaw(image);
}

TEST(ImageFlaw, IsNotInAWholeBlock)
{
    EXPECT_EQ(flawOf(imageWithBlock(1024, 512)), ImageFlaw::None);
    EXPECT_EQ(flawOf(imageWithBlock(512, 256)), ImageFlaw::None);
}

TEST(ImageFlaw, IsABlockWithoutRoomForItsVersion)
{
    EXPECT_EQ(flawOf(imageWithBlock(1000, 744)), ImageFlaw::None);
    EXPECT_EQ(flawOf(imageWithBlock(256, 0)), ImageFlaw::NoVersion);
}

TEST(ImageFlaw, IsAnyIdThatIsBlank)
{
    for (const std::size_t id : {2U, 4U, 6U}) {
        for (const std::uint8_t byte : ByteList{0x00, 0xFF}) {
            ByteList bytes = imageWithBlock(512, 256);
            putAt(bytes, 256 + id, {byte, byte});
            EXPECT_EQ(flawOf(bytes), ImageFlaw::NoIds);
            putAt(bytes, 256 + id, {byte, 0x01});
            EXPECT_EQ(flawOf(bytes), ImageFlaw::None);
        }
    }
}

TEST(ImageFlaw, IsAStringThatDoesNotFit)
{
    const struct {
        std::size_t at;
        std::uint8_t length;
        ImageFlaw flaw;
    } rows[] = {
        {0, 0, ImageFlaw::None},        // no strings
        {0, 36, ImageFlaw::BadStrings}, // the first is too long
        {12, 1, ImageFlaw::BadStrings}, // shorter than its header
        {12, 2, ImageFlaw::None},       // an empty one
        {12, 23, ImageFlaw::None},      // the third fills the area
        {12, 24, ImageFlaw::BadStrings},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(static_cast<int>(row.length));
        ByteList bytes = imageWithBlock(512, 256);
        putAt(bytes, 256 + 43 + row.at, {row.length});
        EXPECT_EQ(flawOf(bytes), row.flaw);
    }
}

TEST(ImageFlaw, IsNotWhatFollowsTheLastString)
{
    ByteList three = imageWithBlock(512, 256);
    putAt(three, 256 + 43 + 16, {0xFF});
    EXPECT_EQ(flawOf(three), ImageFlaw::None);
    ByteList one = imageWithBlock(512, 256);
    putAt(one, 256 + 43, {35});
    putAt(one, 256 + 43 + 35, {0xFF});
    EXPECT_EQ(flawOf(one), ImageFlaw::None);
}

} // namespace
} // namespace vornadel::test
