#include "flows/FlashRead.h"

#include "tests/support/RecordingReporter.h"
#include "tests/support/SimulatedSetup.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace vornadel::test
{

namespace
{

using testing::ElementsAre;

class FlashRead : public testing::Test
{
protected:
    bool read() { return readFlash(flash, reporter); }

    SimulatedSetup setup;
    std::vector<std::uint8_t> flash{1, 2, 3}; // what was there before
    RecordingReporter reporter;
};

} // namespace

TEST_F(FlashRead, BringsEveryByteOfTheFlashAndLeavesItAsItIs)
{
    std::vector<std::uint8_t> bytes = demoImage();
    for (std::size_t i = 0; i < 0x5000; ++i) {
        bytes[i] = static_cast<std::uint8_t>(i * 31 + i / 256); // all pieces differ
    }
    ASSERT_TRUE(setup.hub().setFlash(bytes));
    EXPECT_TRUE(read());
    EXPECT_EQ(flash, bytes);
    EXPECT_EQ(setup.hub().flash(), bytes);
    EXPECT_EQ(setup.hub().runningCode(), HubCode::Flash);
    EXPECT_FALSE(Hub_IsOpen());
}

TEST_F(FlashRead, TellsItsLinesAndValuesInThisOrder)
{
    EXPECT_TRUE(read());
    EXPECT_THAT(reporter.lines(),
                ElementsAre("0%", "reset", "blue Open Device...\n", "10% posted",
                            "blue Reading Flash...\n", "20% posted", "30% posted", "40% posted",
                            "50% posted", "60% posted", "70% posted", "80% posted", "90% posted",
                            "blue Reset to Flash Code...\n", "100% posted",
                            "blue Read Fw Success\n", "0% posted"));
}

TEST_F(FlashRead, TellsAFailureInThisOrder)
{
    setup.hub().addFault({.kind = FaultKind::Stall, .on = RequestKind::Read, .position = 3});
    EXPECT_FALSE(read());
    EXPECT_THAT(reporter.lines(),
                ElementsAre("0%", "reset", "blue Open Device...\n", "10% posted",
                            "blue Reading Flash...\n", "20% posted", "30% posted",
                            "red Fail to Read Flash\n", "red Read Fw Fail\n", "0% posted"));
}

TEST_F(FlashRead, TakesBytesThatWereNotDeliveredFor0)
{
    setup.hub().addFault({.kind = FaultKind::Ignore, .on = RequestKind::Read, .position = 2});
    EXPECT_TRUE(read());
    std::vector<std::uint8_t> expected = demoImage();
    std::fill_n(expected.begin() + 4096, 4096, std::uint8_t{0});
    EXPECT_EQ(flash, expected);
}

} // namespace vornadel::test
