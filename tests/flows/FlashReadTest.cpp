#include "flows/FlashRead.h"

#include "base/LastError.h"
#include "tests/flows/Told.h"
#include "tests/flows/WireLog.h"
#include "tests/support/SimulatedSetup.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
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

constexpr std::size_t kFlashBytes = 32768;

SimulatedHubOptions runningRomCode()
{
    SimulatedHubOptions options;
    options.mode = HubCode::Rom;
    return options;
}

class FlashRead : public testing::Test
{
protected:
    FlashRead()
    {
        LastError = kUntouched;
        keepRequests(setup.hub(), wire);
    }

    bool read() { return readFlash(flash, reporter); }

    /// Reads with one thing going wrong, which must leave what is in the way of success as it was.
    void expectFailure(const Fault& fault, const std::string& reason)
    {
        setup.hub().addFault(fault);
        EXPECT_FALSE(read());
        EXPECT_EQ(setup.hub().faultsTriggered(), 1U);
        EXPECT_THAT(reporter.texts(Kind::Red), ElementsAre(reason, "Read Fw Fail\n"));
        EXPECT_EQ(flash, earlier);
        EXPECT_EQ(setup.hub().flash(), demoImage());
        EXPECT_FALSE(Hub_IsOpen());
        EXPECT_EQ(told(reporter).back(), "0% posted");
    }

    const std::vector<std::uint8_t> earlier{1, 2, 3};
    SimulatedSetup setup;
    std::vector<std::uint8_t> flash = earlier;
    RecordingReporter reporter;
    std::vector<WireRequest> wire;
};

constexpr const char* kNotOpened =
    "Fail to Open Rom Device\nPlease Load Driver firstly\nThen replugin usb hub device\n";

} // namespace

TEST_F(FlashRead, SendsExactlyTheseRequests)
{
    EXPECT_TRUE(read());

    const WireRequest hello{0x40, 0x02, 0x0001, HUB_MAKER_VID, 0, {}};
    const WireRequest status{0xC0, 0x09, 0, 0, 32, {}};
    std::vector<WireRequest> expected{hello, status, status, {0x40, 0x00, 0, 0, 0, {}},
                                      hello, status};
    for (std::uint16_t address = 0; address < 0x8000;
         address = static_cast<std::uint16_t>(address + 4096)) {
        expected.push_back({0xC0, 0xD8, address, 0, 4096, {}});
    }
    expected.push_back({0x40, 0xE9, 0x0101, 0, 0, {}});
    expected.push_back(hello);
    EXPECT_EQ(wire, expected);
}

TEST_F(FlashRead, BringsEveryByteOfTheFlashAndLeavesItAsItIs)
{
    std::vector<std::uint8_t> bytes = demoImage();
    for (std::size_t i = 0; i < 0x5000; ++i) {
        bytes[i] = static_cast<std::uint8_t>(i * 31 + i / 256); // no two pieces alike
    }
    ASSERT_TRUE(setup.hub().setFlash(bytes));
    EXPECT_TRUE(read());
    EXPECT_EQ(flash, bytes);
    EXPECT_EQ(setup.hub().flash(), bytes);
    EXPECT_EQ(setup.hub().runningCode(), HubCode::Flash);
    EXPECT_FALSE(Hub_IsOpen());
}

TEST_F(FlashRead, ReadsABlankFlashAsWellAsAnyOther)
{
    const std::vector<std::uint8_t> blank(kFlashBytes, 0xFF);
    ASSERT_TRUE(setup.hub().setFlash(blank));
    EXPECT_TRUE(read());
    EXPECT_EQ(flash, blank);
    EXPECT_EQ(reporter.texts(Kind::Blue).back(), "Read Fw Success\n");
}

TEST_F(FlashRead, TellsItsLinesAndValuesInThisOrder)
{
    EXPECT_TRUE(read());
    EXPECT_THAT(told(reporter),
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
    EXPECT_THAT(told(reporter),
                ElementsAre("0%", "reset", "blue Open Device...\n", "10% posted",
                            "blue Reading Flash...\n", "20% posted", "30% posted",
                            "red Fail to Read Flash\n", "red Read Fw Fail\n", "0% posted"));
}

TEST_F(FlashRead, UsesAHubThatRunsItsRomCodeAsItIs)
{
    SimulatedSetup rom(runningRomCode());
    std::vector<WireRequest> requests;
    keepRequests(rom.hub(), requests);
    EXPECT_TRUE(read());
    EXPECT_EQ(flash, demoImage());
    ASSERT_EQ(requests.size(), 2U + 8 + 2);
    EXPECT_EQ(requests[2].bRequest, 0xD8);
    EXPECT_THAT(rom.clock.pauses(), ElementsAre(2s));
}

TEST_F(FlashRead, PausesOnlyForTheRestarts)
{
    EXPECT_TRUE(read());
    EXPECT_THAT(setup.clock.pauses(), ElementsAre(1s, 2s));
}

TEST_F(FlashRead, HandsTheFlashOverWhileTheHubIsOpenAndTheBarIsFull)
{
    std::vector<std::string> steps;
    const auto finished = [&] {
        steps.emplace_back("finished");
        EXPECT_EQ(flash, demoImage());
        EXPECT_TRUE(Hub_IsOpen());
        EXPECT_EQ(told(reporter).back(), "blue Read Fw Success\n");
    };
    const auto closed = [&] {
        steps.emplace_back("closed");
        EXPECT_FALSE(Hub_IsOpen());
        EXPECT_EQ(told(reporter).back(), "blue Read Fw Success\n");
    };
    EXPECT_TRUE(readFlash(flash, reporter, finished, closed));
    EXPECT_THAT(steps, ElementsAre("finished", "closed"));
    EXPECT_EQ(told(reporter).back(), "0% posted");
}

TEST_F(FlashRead, HandsNothingOverAfterAFailureButTellsThatTheHubIsClosed)
{
    setup.hub().addFault({.kind = FaultKind::Stall, .on = RequestKind::Flash, .position = 1});
    int timesClosed = 0;
    const auto closed = [&] {
        ++timesClosed;
        EXPECT_FALSE(Hub_IsOpen());
        EXPECT_EQ(told(reporter).back(), "red Read Fw Fail\n");
    };
    EXPECT_FALSE(readFlash(
        flash, reporter, [] { FAIL() << "handed over"; }, closed));
    EXPECT_EQ(timesClosed, 1);
    EXPECT_EQ(flash, earlier);
}

TEST_F(FlashRead, WithoutAHubNamesTheDriver)
{
    setup.hub().unplug();
    EXPECT_FALSE(read());
    EXPECT_THAT(told(reporter),
                ElementsAre("0%", "reset", "blue Open Device...\n",
                            "red " + std::string(kNotOpened), "red Read Fw Fail\n", "0% posted"));
    EXPECT_EQ(LastError, 5);
    EXPECT_THAT(wire, IsEmpty());
}

TEST_F(FlashRead, GivesUpOnAHubThatStaysInItsFlashCode)
{
    expectFailure({.kind = FaultKind::SameMode, .on = {}}, kNotOpened);
    EXPECT_EQ(LastError, 12);
}

TEST_F(FlashRead, StopsAtTheFirstPieceThatIsNotRead)
{
    expectFailure({.kind = FaultKind::Stall, .on = RequestKind::Read, .position = 8},
                  "Fail to Read Flash\n");
    EXPECT_EQ(wire.back().wValue, 7 * 4096);
    EXPECT_EQ(LastError, kUntouched);
}

TEST_F(FlashRead, FailsWhenTheHubDoesNotComeBackAndKeepsNothing)
{
    expectFailure({.kind = FaultKind::Never, .on = {}, .position = 2},
                  "Fail to Reset to Flash Code\n");
    std::vector<Clock::Duration> expected{1s};
    expected.insert(expected.end(), 20, 2s);
    EXPECT_EQ(setup.clock.pauses(), expected);
    EXPECT_EQ(LastError, 5);
}

TEST_F(FlashRead, SendsTheLastRestartOnceEvenWhenItIsRefused)
{
    expectFailure({.kind = FaultKind::Stall, .on = RequestKind::Flash, .position = 1},
                  "Fail to Reset to Flash Code\n");
    EXPECT_EQ(wire.back().bRequest, 0xE9);
    EXPECT_THAT(setup.clock.pauses(), ElementsAre(1s, 128ms, 128ms, 128ms));
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
