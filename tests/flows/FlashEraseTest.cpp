#include "flows/FlashErase.h"

#include "tests/flows/Told.h"
#include "tests/flows/WireLog.h"
#include "tests/support/SimulatedSetup.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

namespace vornadel::test
{

namespace
{

using namespace std::chrono_literals;
using testing::ElementsAre;

class FlashErase : public testing::Test
{
protected:
    FlashErase() { keepRequests(setup.hub(), wire); }

    bool erase() { return eraseFlash(reporter); }

    const std::vector<std::uint8_t> blank = std::vector<std::uint8_t>(32768, 0xFF);
    SimulatedSetup setup;
    RecordingReporter reporter;
    std::vector<WireRequest> wire;
};

} // namespace

TEST_F(FlashErase, SendsExactlyTheseRequests)
{
    EXPECT_TRUE(erase());
    const WireRequest hello{0x40, 0x02, 0x0001, HUB_MAKER_VID, 0, {}};
    const WireRequest status{0xC0, 0x09, 0, 0, 32, {}};
    const std::vector<WireRequest> expected{hello,
                                            status,
                                            status,
                                            {0x40, 0x00, 0, 0, 0, {}},
                                            hello,
                                            status,
                                            {0x40, 0xE8, 0, 0, 0, {}},
                                            {0x40, 0xE9, 0x0101, 0, 0, {}},
                                            hello};
    EXPECT_EQ(wire, expected);
    EXPECT_EQ(setup.hub().flash(), blank);
}

TEST_F(FlashErase, TellsItsLinesInThisOrderAndLeavesTheBarAt0)
{
    EXPECT_TRUE(erase());
    EXPECT_THAT(told(reporter),
                ElementsAre("reset", "0%", "blue Open Rom Device...\n", "blue Erase Flash...\n",
                            "blue Reseting...\n", "blue Erase FW Success\n"));
}

TEST_F(FlashErase, ErasesABlankFlashOnceMore)
{
    EXPECT_TRUE(erase());
    EXPECT_TRUE(erase());
    EXPECT_EQ(setup.hub().flash(), blank);
}

TEST_F(FlashErase, PausesOnlyForTheRestartsAndTheErase)
{
    EXPECT_TRUE(erase());
    EXPECT_THAT(setup.clock.pauses(), ElementsAre(1s, 128ms, 2s));
}

} // namespace vornadel::test
