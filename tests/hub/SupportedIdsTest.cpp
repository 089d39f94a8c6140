#include "hub/SupportedIds.h"

#include <gtest/gtest.h>

namespace vornadel::test
{
namespace
{

class SupportedIds : public ::testing::Test
{
public:
    ~SupportedIds() override { SupportedIdList = {}; }

protected:
    SupportedIds() { SupportedIdList = {}; }
};

TEST_F(SupportedIds, MatchADeviceByEitherProductId)
{
    SupportedIdList[5] = {1, 0x1111, 0x3300, 0x2200};
    EXPECT_TRUE(FindSupportedId(0x1111, 0x3300));
    EXPECT_TRUE(FindSupportedId(0x1111, 0x2200));
    EXPECT_FALSE(FindSupportedId(0x1111, 0x3301));
    EXPECT_FALSE(FindSupportedId(0x1112, 0x3300));
}

TEST_F(SupportedIds, MatchATripleOnlyWithinOneEntry)
{
    SupportedIdList[0] = {1, 0x1111, 0x3300, 0x2200};
    SupportedIdList[1] = {1, 0x1111, 0x3301, 0x2201};
    EXPECT_TRUE(FindSupportedTriple(0x1111, 0x3301, 0x2201));
    EXPECT_FALSE(FindSupportedTriple(0x1111, 0x3300, 0x2201));
    EXPECT_FALSE(FindSupportedTriple(0x1111, 0x2200, 0x3300));
    EXPECT_FALSE(FindSupportedTriple(0x1110, 0x3300, 0x2200));
}

TEST_F(SupportedIds, CountOnlyWithAValidFlagOfExactlyOne)
{
    SupportedIdList[0] = {0, 0x1111, 0x3300, 0x2200};
    SupportedIdList[1] = {2, 0x1111, 0x3300, 0x2200};
    SupportedIdList[2] = {0xFFFF, 0x1111, 0x3300, 0x2200};
    EXPECT_FALSE(FindSupportedId(0x1111, 0x3300));
    EXPECT_FALSE(FindSupportedTriple(0x1111, 0x3300, 0x2200));
}

TEST_F(SupportedIds, AreSearchedToTheLastEntryAcrossGaps)
{
    SupportedIdList[63] = {1, 0xFFFF, 0xFFFE, 0xFFFD};
    EXPECT_TRUE(FindSupportedId(0xFFFF, 0xFFFD));
    EXPECT_TRUE(FindSupportedTriple(0xFFFF, 0xFFFE, 0xFFFD));
}

TEST_F(SupportedIds, AreAddedInTheFirstFreeEntryWhileThereIsOne)
{
    SupportedIdList.fill({1, 0x1111, 0x3300, 0x2200});
    EXPECT_FALSE(AddSupportedIds(0x1234, 0x5678, 0x9ABC));
    EXPECT_FALSE(FindSupportedId(0x1234, 0x5678));
    SupportedIdList[62].valid = 2;
    SupportedIdList[63].valid = 0;
    EXPECT_TRUE(AddSupportedIds(0x1234, 0x5678, 0x9ABC));
    EXPECT_EQ(SupportedIdList[62], (SupportedIdEntry{1, 0x1234, 0x5678, 0x9ABC}));
    EXPECT_EQ(SupportedIdList[63].valid, 0);
}

} // namespace
} // namespace vornadel::test
