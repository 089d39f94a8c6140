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

/// Requests of an update that finds the hub running its flash code.
constexpr unsigned kUpdateRequests = 25;
constexpr unsigned kUpdateOpens = 3;
constexpr unsigned kUpdateRestarts = 2;

class FaultyUpdate : public testing::Test
{
protected:
    FaultyUpdate() : bytes(demoImage(0x0101))
    {
        EXPECT_TRUE(FwImage_Parse(image, bytes.data(), static_cast<std::int32_t>(bytes.size())));
    }

    /// Runs an update with one fault in it, then one without. True when the fault happened.
    bool survives(const Fault& fault)
    {
        SimulatedSetup setup;
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
        const bool happened = setup.hub().faultsTriggered() > 0;

        setup.hub().replug();
        setup.clock.advance(60s); // whatever was late or bouncing is over
        for (unsigned refused = 0; refused < fault.amount && !Hub_OpenDevice(); ++refused) {
        }
        Hub_CloseDevice();
        RecordingReporter healthy;
        EXPECT_TRUE(updateFirmware(image, "demo.bin", healthy));
        EXPECT_EQ(setup.hub().flash(), bytes);
        EXPECT_EQ(setup.hub().runningCode(), HubCode::Flash);
        return happened;
    }

    std::vector<std::uint8_t> bytes;
    FwImage image;
};

struct SweepRow {
    const char* name;
    FaultKind kind;
    unsigned amount;
    unsigned positions; ///< 1 to this are tried
    unsigned expected;  ///< at how many of them something can go wrong
};

class FaultSweep : public FaultyUpdate, public testing::WithParamInterface<SweepRow>
{
};

} // namespace

TEST_P(FaultSweep, NeverTellsSuccessOverAWrongFlashAndRecovers)
{
    const SweepRow& row = GetParam();
    unsigned happened = 0;
    for (unsigned position = 1; position <= row.positions; ++position) {
        SCOPED_TRACE(position);
        const Fault fault{.kind = row.kind,
                          .on = {},
                          .position = position,
                          .amount = row.amount,
                          .delay = std::chrono::milliseconds(1500) * static_cast<int>(position)};
        happened += survives(fault) ? 1U : 0U;
    }
    EXPECT_EQ(happened, row.expected);
}

INSTANTIATE_TEST_SUITE_P(
    EveryRequest, FaultSweep,
    testing::Values(SweepRow{"Stall", FaultKind::Stall, 0, kUpdateRequests, kUpdateRequests},
                    SweepRow{"VanishBefore", FaultKind::VanishBefore, 0, kUpdateRequests, kUpdateRequests},
                    SweepRow{"VanishAfter", FaultKind::VanishAfter, 0, kUpdateRequests, kUpdateRequests},
                    SweepRow{"Ignore", FaultKind::Ignore, 0, kUpdateRequests, kUpdateRequests},
                    SweepRow{"TornAtOnce", FaultKind::Torn, 0, kUpdateRequests, 8},
                    SweepRow{"TornHalfWay", FaultKind::Torn, 1000, kUpdateRequests, 8},
                    SweepRow{"TornAtTheEnd", FaultKind::Torn, 4095, kUpdateRequests, 8},
                    SweepRow{"Flip", FaultKind::Flip, 0, kUpdateRequests, 16},
                    SweepRow{"OneOpenRefused", FaultKind::OpenRefused, 1, kUpdateOpens, kUpdateOpens},
                    SweepRow{"NineteenOpensRefused", FaultKind::OpenRefused, 19, kUpdateOpens, kUpdateOpens},
                    SweepRow{"AllOpensRefused", FaultKind::OpenRefused, 20, kUpdateOpens, kUpdateOpens},
                    SweepRow{"Never", FaultKind::Never, 0, kUpdateRestarts, kUpdateRestarts},
                    SweepRow{"Late", FaultKind::Late, 0, kUpdateRestarts, kUpdateRestarts},
                    SweepRow{"SameMode", FaultKind::SameMode, 0, kUpdateRestarts, kUpdateRestarts},
                    SweepRow{"Bounce", FaultKind::Bounce, 0, kUpdateRestarts, kUpdateRestarts}),
    [](const auto& row) { return row.param.name; });

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
