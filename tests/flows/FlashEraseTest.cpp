#include "flows/FlashErase.h"

#include "base/LastError.h"
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
using testing::IsEmpty;
using Kind = RecordingReporter::Kind;

/// A value that nothing sets.
constexpr int kUntouched = -1;

class FlashErase : public testing::Test
{
protected:
    FlashErase()
    {
        LastError = kUntouched;
        keepRequests(setup.hub(), wire);
    }

    bool erase() { return eraseFlash(reporter); }

    void expectFailure(const std::string& reason)
    {
        EXPECT_FALSE(erase());
        EXPECT_GT(setup.hub().faultsTriggered(), 0U);
        EXPECT_THAT(reporter.texts(Kind::Red), ElementsAre(reason, "\nErase FW Fail\n"));
        EXPECT_FALSE(Hub_IsOpen());
        EXPECT_THAT(reporter.values(Wait::Yes), ElementsAre(0));
        EXPECT_THAT(reporter.values(Wait::No), IsEmpty());
    }

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
}

TEST_F(FlashErase, LeavesABlankFlashAndAClosedHub)
{
    EXPECT_TRUE(erase());
    EXPECT_EQ(setup.hub().flash(), blank);
    EXPECT_FALSE(Hub_IsOpen());
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

TEST_F(FlashErase, UsesAHubThatRunsItsRomCodeAsItIs)
{
    SimulatedHubOptions options;
    options.mode = HubCode::Rom;
    SimulatedSetup rom(options);
    std::vector<WireRequest> requests;
    keepRequests(rom.hub(), requests);
    EXPECT_TRUE(erase());
    EXPECT_EQ(rom.hub().flash(), blank);
    ASSERT_EQ(requests.size(), 5U);
    EXPECT_EQ(requests[2].bRequest, 0xE8);
    EXPECT_THAT(rom.clock.pauses(), ElementsAre(128ms, 2s));
}

TEST_F(FlashErase, PausesOnlyForTheRestartsAndTheErase)
{
    EXPECT_TRUE(erase());
    EXPECT_THAT(setup.clock.pauses(), ElementsAre(1s, 128ms, 2s));
}

TEST_F(FlashErase, FailsWithoutAHub)
{
    setup.hub().unplug();
    EXPECT_FALSE(erase());
    EXPECT_THAT(told(reporter),
                ElementsAre("reset", "0%", "blue Open Rom Device...\n",
                            "red Fail to Open Rom Device", "red \nErase FW Fail\n"));
    EXPECT_EQ(LastError, 5);
    EXPECT_THAT(wire, IsEmpty());
}

TEST_F(FlashErase, GivesUpOnAHubThatStaysInItsFlashCode)
{
    setup.hub().addFault({.kind = FaultKind::SameMode, .on = {}});
    expectFailure("Fail to Open Rom Device");
    EXPECT_EQ(LastError, 12);
    EXPECT_EQ(setup.hub().flash(), demoImage());
}

TEST_F(FlashErase, TriesThreeTimes)
{
    for (unsigned attempt = 1; attempt <= 3; ++attempt) {
        setup.hub().addFault(
            {.kind = FaultKind::Stall, .on = RequestKind::Erase, .position = attempt});
    }
    expectFailure("Fail to Erase flash");
    EXPECT_THAT(setup.clock.pauses(), ElementsAre(1s, 128ms, 128ms, 128ms));
    EXPECT_EQ(setup.hub().flash(), demoImage());
    EXPECT_EQ(LastError, kUntouched);
}

TEST_F(FlashErase, SaysSoWhenTheHubDoesNotComeBackFromTheLastRestart)
{
    setup.hub().addFault({.kind = FaultKind::Never, .on = {}, .position = 2});
    expectFailure("Fail to Reset Flash & Wait");
    EXPECT_EQ(setup.hub().flash(), blank);
    EXPECT_EQ(LastError, 5);
}

TEST_F(FlashErase, SendsTheLastRestartOnceEvenWhenItIsRefused)
{
    setup.hub().addFault({.kind = FaultKind::Stall, .on = RequestKind::Flash, .position = 1});
    expectFailure("Fail to Reset Flash & Wait");
    EXPECT_EQ(wire.back().bRequest, 0xE9);
}

} // namespace vornadel::test
