// Whatever goes wrong at whatever request: success is told only over an equal flash, and the next run succeeds.

#include "flows/FirmwareUpdate.h"

#include "tests/support/RecordingReporter.h"
#include "tests/support/SimulatedSetup.h"

#include <gtest/gtest.h>

#include <chrono>
#include <set>

namespace vornadel::test
{

namespace
{

using namespace std::chrono_literals;
using Kind = RecordingReporter::Kind;

SimulatedHubOptions hubThatRuns(HubCode code)
{
    SimulatedHubOptions options;
    options.mode = code;
    return options;
}

class FaultyUpdate : public testing::Test
{
protected:
    FaultyUpdate() : bytes(demoImage(0x0101))
    {
        EXPECT_TRUE(FwImage_Parse(image, bytes.data(), static_cast<std::int32_t>(bytes.size())));
    }

    /// Runs an update with one fault in it, then one without. True when the fault happened.
    bool survives(const Fault& fault, HubCode runs)
    {
        SimulatedSetup setup(hubThatRuns(runs));
        setup.hub().addFault(fault);

        RecordingReporter faulty;
        const bool succeeded = updateFirmware(image, "demo.bin", faulty);
        EXPECT_EQ(succeeded, faulty.saysSuccess());
        if (succeeded) {
            EXPECT_EQ(setup.hub().flash(), bytes);
            EXPECT_TRUE(faulty.texts(Kind::Red).empty());
        } else {
            EXPECT_EQ(faulty.texts(Kind::Red).size(), 2U);
            EXPECT_EQ(faulty.texts(Kind::Red).back(), "Update FW Fail\n");
        }
        EXPECT_FALSE(Hub_IsOpen());
        if (setup.hub().faultsTriggered() == 0) {
            return false; // it is still to come, and would hit the run that is to be healthy
        }

        setup.hub().replug();
        setup.clock.advance(60s); // whatever was late or bouncing is over
        for (unsigned refused = 0; refused < fault.amount && !Hub_OpenDevice(); ++refused) {
        }
        Hub_CloseDevice();
        RecordingReporter healthy;
        EXPECT_TRUE(updateFirmware(image, "demo.bin", healthy));
        EXPECT_EQ(setup.hub().flash(), bytes);
        EXPECT_EQ(setup.hub().runningCode(), HubCode::Flash);
        return true;
    }

    std::vector<std::uint8_t> bytes;
    FwImage image;
};

struct SweepRow {
    const char* name;
    FaultKind kind;
    unsigned amount;
    unsigned fromFlashCode; ///< how often it can happen in an update of a hub that runs its flash code
    unsigned fromRomCode;   ///< the same for a hub that runs its ROM code already
};

class FaultSweep : public FaultyUpdate, public testing::WithParamInterface<SweepRow>
{
protected:
    /// Tries the fault at every position of an update, until the update is shorter than that; how often it happened.
    unsigned sweep(HubCode runs)
    {
        const SweepRow& row = GetParam();
        unsigned happened = 0;
        for (unsigned position = 1; position <= requestsOfAnUpdate(runs); ++position) {
            SCOPED_TRACE(position);
            const Fault fault{.kind = row.kind,
                              .on = {},
                              .position = position,
                              .amount = row.amount,
                              .delay = std::chrono::seconds(row.amount)};
            happened += survives(fault, runs) ? 1U : 0U;
        }
        return happened;
    }

private:
    unsigned requestsOfAnUpdate(HubCode runs)
    {
        SimulatedSetup setup(hubThatRuns(runs));
        RecordingReporter reporter;
        EXPECT_TRUE(updateFirmware(image, "demo.bin", reporter));
        return setup.hub().requestCount();
    }
};

} // namespace

TEST_P(FaultSweep, NeverTellsSuccessOverAWrongFlashAndRecovers)
{
    EXPECT_EQ(sweep(HubCode::Flash), GetParam().fromFlashCode);
}

TEST_P(FaultSweep, DoesNotEitherOnAHubInItsRomCode)
{
    EXPECT_EQ(sweep(HubCode::Rom), GetParam().fromRomCode);
}

INSTANTIATE_TEST_SUITE_P(EveryRequest, FaultSweep,
                         testing::Values(SweepRow{"Stall", FaultKind::Stall, 0, 25, 21},
                                         SweepRow{"VanishBefore", FaultKind::VanishBefore, 0, 25, 21},
                                         SweepRow{"VanishAfter", FaultKind::VanishAfter, 0, 25, 21},
                                         SweepRow{"Ignore", FaultKind::Ignore, 0, 25, 21},
                                         SweepRow{"TornAtOnce", FaultKind::Torn, 0, 8, 8},
                                         SweepRow{"TornHalfWay", FaultKind::Torn, 1000, 8, 8},
                                         SweepRow{"TornAtTheEnd", FaultKind::Torn, 4095, 8, 8},
                                         SweepRow{"Flip", FaultKind::Flip, 0, 16, 16},
                                         SweepRow{"OneOpenRefused", FaultKind::OpenRefused, 1, 3, 2},
                                         SweepRow{"NineteenOpensRefused", FaultKind::OpenRefused, 19, 3, 2},
                                         SweepRow{"AllOpensRefused", FaultKind::OpenRefused, 20, 3, 2},
                                         SweepRow{"Never", FaultKind::Never, 0, 2, 1},
                                         SweepRow{"Late", FaultKind::Late, 3, 2, 1},
                                         SweepRow{"JustInTime", FaultKind::Late, 19, 2, 1},
                                         SweepRow{"TooLateForTheRomCode", FaultKind::Late, 21, 2, 1},
                                         SweepRow{"TooLate", FaultKind::Late, 41, 2, 1},
                                         SweepRow{"SameMode", FaultKind::SameMode, 0, 2, 1},
                                         SweepRow{"Bounce", FaultKind::Bounce, 0, 2, 1}),
                         [](const auto& row) { return row.param.name; });

struct LateRow {
    unsigned restart;
    int seconds;
    bool expected;
};

TEST_F(FaultyUpdate, WaitsTwentySecondsForTheRomCodeAndFortyForTheFlashCode)
{
    for (const LateRow& row : {LateRow{1, 20, true}, {1, 21, false}, {2, 40, true}, {2, 41, false}}) {
        SCOPED_TRACE(row.seconds);
        SimulatedSetup setup;
        setup.hub().addFault({.kind = FaultKind::Late,
                              .on = {},
                              .position = row.restart,
                              .delay = std::chrono::seconds(row.seconds)});
        RecordingReporter reporter;
        EXPECT_EQ(updateFirmware(image, "demo.bin", reporter), row.expected);
    }
}

TEST_F(FaultyUpdate, NineteenRefusedReopensAreSatOut)
{
    SimulatedSetup setup;
    setup.hub().addFault({.kind = FaultKind::OpenRefused, .on = {}, .position = 2, .amount = 19});
    RecordingReporter reporter;
    EXPECT_TRUE(updateFirmware(image, "demo.bin", reporter));
}

TEST_F(FaultyUpdate, TwentyRefusedReopensAreNot)
{
    SimulatedSetup setup;
    setup.hub().addFault({.kind = FaultKind::OpenRefused, .on = {}, .position = 2, .amount = 20});
    RecordingReporter reporter;
    EXPECT_FALSE(updateFirmware(image, "demo.bin", reporter));
}

TEST_F(FaultyUpdate, AbandonedAtAnyRequestEndsThereAndTheNextRunSucceeds)
{
    constexpr unsigned kUpdateRequests = 25;
    for (unsigned position = 1; position <= kUpdateRequests; ++position) {
        SCOPED_TRACE(position);
        SimulatedSetup setup;
        setup.hub().onRequest = [&](const ControlRequest&) {
            if (setup.hub().requestCount() == position) {
                Hub_Abandon();
                setup.clock.interrupt();
            }
        };
        RecordingReporter reporter;
        const bool succeeded = updateFirmware(image, "demo.bin", reporter);
        EXPECT_EQ(setup.hub().requestCount(), position);
        EXPECT_FALSE(Hub_IsOpen());
        EXPECT_EQ(succeeded, position == kUpdateRequests)
            << "only the last open-time request completes the run";

        VirtualClock later;
        Hub_UsePlatform(*setup.bus, later);
        setup.hub().onRequest = nullptr;
        RecordingReporter healthy;
        EXPECT_TRUE(updateFirmware(image, "demo.bin", healthy));
        EXPECT_EQ(setup.hub().flash(), bytes);
    }
}

} // namespace vornadel::test
