#include "platform/UsbPlace.h"

#include <gtest/gtest.h>

namespace vornadel::test
{

namespace
{

const UsbPlace kHalf{{"1-3", 7}, {"2-3", 8}};
const UsbPlace kOtherHalf{{"2-3", 8}, {"1-3", 7}};
const UsbPlace kOnePort{{"1-1.4", 9}, {}};
const UsbPlace kUnknown;

TEST(UsbPlace, HasTheSameTextFromEitherHalf)
{
    EXPECT_EQ(kHalf.text(), "2-3/1-3");
    EXPECT_EQ(kOtherHalf.text(), "2-3/1-3");
    EXPECT_EQ((UsbPlace{{"9-1", 1}, {"10-1", 1}}.text()), "10-1/9-1");
    EXPECT_EQ((UsbPlace{{"1-1", 1}, {"1-2", 1}}.text()), "1-2/1-1");
    EXPECT_EQ(kOnePort.text(), "1-1.4");
    EXPECT_EQ(kUnknown.text(), "");
}

TEST(UsbPlace, IsCalledByEitherPortOrBoth)
{
    for (const char* const name : {"1-3", "2-3", "2-3/1-3"}) {
        EXPECT_TRUE(kHalf.isCalled(name)) << name;
    }
    for (const char* const name : {"", "3", "1-3/2-3", "2-33"}) {
        EXPECT_FALSE(kHalf.isCalled(name)) << name;
    }
    EXPECT_FALSE(kOnePort.isCalled(""));
    EXPECT_FALSE(kUnknown.isCalled(""));
}

TEST(UsbPlace, IsTheSameConnectorIfAPortIs)
{
    EXPECT_TRUE(kHalf.isSameConnector(kOtherHalf));
    EXPECT_TRUE(kHalf.isSameConnector({{"2-3", 99}, {}}));
    EXPECT_TRUE((UsbPlace{{"2-3", 99}, {}}.isSameConnector(kHalf)));
    EXPECT_FALSE(kHalf.isSameConnector(kOnePort));
    EXPECT_FALSE(kOnePort.isSameConnector({{"1-1", 9}, {}}));
    EXPECT_FALSE(kUnknown.isSameConnector(kUnknown));
}

TEST(UsbPlace, HasArrivedWhenBothStaysAreOver)
{
    EXPECT_FALSE(kHalf.hasArrivedSince(kHalf));
    EXPECT_FALSE(kOtherHalf.hasArrivedSince(kHalf));
    EXPECT_FALSE((UsbPlace{{"1-3", 9}, {"2-3", 8}}.hasArrivedSince(kHalf)));
    EXPECT_FALSE((UsbPlace{{"2-3", 9}, {"1-3", 7}}.hasArrivedSince(kHalf)));
    EXPECT_TRUE((UsbPlace{{"1-3", 9}, {"2-3", 10}}.hasArrivedSince(kHalf)));
    EXPECT_TRUE((UsbPlace{{"2-3", 9}, {"1-3", 0}}.hasArrivedSince(kHalf)));
}

TEST(UsbPlace, HasArrivedWhenItsOnlyHalfHasLeft)
{
    const UsbPlace before{{"1-3", 7}, {"2-3", 0}};
    EXPECT_FALSE((UsbPlace{{"2-3", 8}, {"1-3", 7}}.hasArrivedSince(before)));
    EXPECT_TRUE((UsbPlace{{"1-3", 9}, {"2-3", 0}}.hasArrivedSince(before)));
}

} // namespace

} // namespace vornadel::test
