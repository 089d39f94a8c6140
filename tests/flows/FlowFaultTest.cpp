// Whatever goes wrong at whatever request of a flow: no success is told without it, the hub is closed, and an update
// afterwards succeeds.

#include "flows/FirmwareUpdate.h"
#include "flows/FlashErase.h"
#include "flows/FlashRead.h"
#include "tests/support/RecordingReporter.h"
#include "tests/support/SimulatedSetup.h"

#include <gtest/gtest.h>

#include <chrono>
#include <ostream>

namespace vornadel::test
{

namespace
{

using namespace std::chrono_literals;
using Kind = RecordingReporter::Kind;

const std::vector<std::uint8_t> kBlank(32768, 0xFF);

/// An update with the demo image 1.01.
bool update(FlowReporter& reporter)
{
    const std::vector<std::uint8_t> bytes = demoImage(kDemoVersion101);
    FwImage image;
    EXPECT_TRUE(FwImage_Parse(image, bytes.data(), static_cast<std::int32_t>(bytes.size())));
    return updateFirmware(image, "demo.bin", reporter);
}

/// One of the flows, with what must hold after it.
struct Flow {
    const char* name;
    bool (*run)(SimulatedHub& hub, FlowReporter& reporter, bool honest);
    const char* success;
    const char* failure;
    unsigned requestsFromFlashCode;
    unsigned requestsFromRomCode;
};

/// `honest`: what the hub confirms has happened, and what it delivers is what its flash holds.
bool readAndLook(SimulatedHub& hub, FlowReporter& reporter, bool honest)
{
    const std::vector<std::uint8_t> earlier{1, 2, 3};
    std::vector<std::uint8_t> bytes = earlier;
    const bool succeeded = readFlash(bytes, reporter);
    EXPECT_EQ(hub.flash(), demoImage());
    if (!succeeded) {
        EXPECT_EQ(bytes, earlier);
    } else if (honest) {
        EXPECT_EQ(bytes, demoImage());
    } else {
        EXPECT_EQ(bytes.size(), kBlank.size());
    }
    return succeeded;
}

bool eraseAndLook(SimulatedHub& hub, FlowReporter& reporter, bool honest)
{
    const bool succeeded = eraseFlash(reporter);
    if (succeeded && honest) {
        EXPECT_EQ(hub.flash(), kBlank);
    } else {
        EXPECT_TRUE(hub.flash() == kBlank || hub.flash() == demoImage());
    }
    return succeeded;
}

/// What was written is compared, so there is no excuse for a dishonest hub.
bool updateAndLook(SimulatedHub& hub, FlowReporter& reporter, bool /*honest*/)
{
    const bool succeeded = update(reporter);
    if (succeeded) {
        EXPECT_EQ(hub.flash(), demoImage(kDemoVersion101));
    }
    return succeeded;
}

constexpr Flow kUpdate{"Update", updateAndLook, "Update FW Success\n", "Update FW Fail\n", 25, 21};
constexpr Flow kRead{"Read", readAndLook, "Read Fw Success\n", "Read Fw Fail\n", 16, 12};
constexpr Flow kErase{"Erase", eraseAndLook, "Erase FW Success\n", "\nErase FW Fail\n", 9, 5};

SimulatedHubOptions hubThatRuns(HubCode code)
{
    SimulatedHubOptions options;
    options.mode = code;
    return options;
}

class FaultyFlow
{
protected:
    /// Runs a flow with one fault in it, then an update without. True when the fault happened.
    static bool survives(const Flow& flow, const Fault& fault, HubCode runs)
    {
        SimulatedSetup setup(hubThatRuns(runs));
        setup.hub().addFault(fault);
        const bool honest = fault.kind != FaultKind::Ignore && fault.kind != FaultKind::Flip;

        RecordingReporter faulty;
        const bool succeeded = flow.run(setup.hub(), faulty, honest);
        expectItSaysSo(flow, faulty, succeeded);
        EXPECT_FALSE(Hub_IsOpen());
        if (setup.hub().faultsTriggered() == 0) {
            return false; // it is still to come, and would hit the update that is to be healthy
        }

        setup.hub().replug();
        setup.clock.advance(60s); // whatever was late or bouncing is over
        for (unsigned refused = 0; refused < fault.amount && !Hub_OpenDevice(); ++refused) {
        }
        Hub_CloseDevice();
        expectUpdateSucceeds(setup);
        return true;
    }

    static void expectItSaysSo(const Flow& flow, const RecordingReporter& reporter, bool succeeded)
    {
        if (succeeded) {
            EXPECT_EQ(reporter.texts(Kind::Blue).back(), flow.success);
            EXPECT_TRUE(reporter.texts(Kind::Red).empty());
        } else {
            ASSERT_EQ(reporter.texts(Kind::Red).size(), 2U);
            EXPECT_EQ(reporter.texts(Kind::Red).back(), flow.failure);
            EXPECT_NE(reporter.texts(Kind::Blue).back(), flow.success);
        }
    }

    static void expectUpdateSucceeds(SimulatedSetup& setup)
    {
        RecordingReporter healthy;
        EXPECT_TRUE(update(healthy));
        EXPECT_EQ(setup.hub().flash(), demoImage(kDemoVersion101));
        EXPECT_EQ(setup.hub().runningCode(), HubCode::Flash);
    }
};

struct SweepRow {
    const Flow& flow;
    const char* name;
    FaultKind kind;
    unsigned amount;
    unsigned fromFlashCode; ///< how often it can happen with a hub that runs its flash code
    unsigned fromRomCode;   ///< the same with a hub that runs its ROM code already
};

void PrintTo(const SweepRow& row, std::ostream* stream) { *stream << row.flow.name << row.name; }

class FaultSweep : public FaultyFlow, public testing::TestWithParam<SweepRow>
{
protected:
    /// Tries the fault at every position of the flow; how often it happened.
    unsigned sweep(HubCode runs, unsigned requests)
    {
        const SweepRow& row = GetParam();
        unsigned happened = 0;
        for (unsigned position = 1; position <= requests; ++position) {
            SCOPED_TRACE(position);
            const Fault fault{.kind = row.kind,
                              .on = {},
                              .position = position,
                              .amount = row.amount,
                              .delay = std::chrono::seconds(row.amount)};
            happened += survives(row.flow, fault, runs) ? 1U : 0U;
        }
        return happened;
    }
};

} // namespace

TEST_P(FaultSweep, TellsNoFalseSuccessAndTheNextUpdateSucceeds)
{
    EXPECT_EQ(sweep(HubCode::Flash, GetParam().flow.requestsFromFlashCode), GetParam().fromFlashCode);
}

TEST_P(FaultSweep, DoesNotEitherOnAHubInItsRomCode)
{
    EXPECT_EQ(sweep(HubCode::Rom, GetParam().flow.requestsFromRomCode), GetParam().fromRomCode);
}

INSTANTIATE_TEST_SUITE_P(
    EveryRequest, FaultSweep,
    testing::Values(SweepRow{kUpdate, "Stall", FaultKind::Stall, 0, 25, 21},
                    SweepRow{kUpdate, "VanishBefore", FaultKind::VanishBefore, 0, 25, 21},
                    SweepRow{kUpdate, "VanishAfter", FaultKind::VanishAfter, 0, 25, 21},
                    SweepRow{kUpdate, "Ignore", FaultKind::Ignore, 0, 25, 21},
                    SweepRow{kUpdate, "TornAtOnce", FaultKind::Torn, 0, 8, 8},
                    SweepRow{kUpdate, "TornHalfWay", FaultKind::Torn, 1000, 8, 8},
                    SweepRow{kUpdate, "TornAtTheEnd", FaultKind::Torn, 4095, 8, 8},
                    SweepRow{kUpdate, "Flip", FaultKind::Flip, 0, 16, 16},
                    SweepRow{kUpdate, "OneOpenRefused", FaultKind::OpenRefused, 1, 3, 2},
                    SweepRow{kUpdate, "NineteenOpensRefused", FaultKind::OpenRefused, 19, 3, 2},
                    SweepRow{kUpdate, "AllOpensRefused", FaultKind::OpenRefused, 20, 3, 2},
                    SweepRow{kUpdate, "Never", FaultKind::Never, 0, 2, 1},
                    SweepRow{kUpdate, "Late", FaultKind::Late, 3, 2, 1},
                    SweepRow{kUpdate, "JustInTime", FaultKind::Late, 19, 2, 1},
                    SweepRow{kUpdate, "TooLateForTheRomCode", FaultKind::Late, 21, 2, 1},
                    SweepRow{kUpdate, "TooLate", FaultKind::Late, 41, 2, 1},
                    SweepRow{kUpdate, "SameMode", FaultKind::SameMode, 0, 2, 1},
                    SweepRow{kUpdate, "Bounce", FaultKind::Bounce, 0, 2, 1},
                    SweepRow{kRead, "Stall", FaultKind::Stall, 0, 16, 12},
                    SweepRow{kRead, "VanishBefore", FaultKind::VanishBefore, 0, 16, 12},
                    SweepRow{kRead, "VanishAfter", FaultKind::VanishAfter, 0, 16, 12},
                    SweepRow{kRead, "Ignore", FaultKind::Ignore, 0, 16, 12},
                    SweepRow{kRead, "Flip", FaultKind::Flip, 0, 8, 8},
                    SweepRow{kRead, "OneOpenRefused", FaultKind::OpenRefused, 1, 3, 2},
                    SweepRow{kRead, "AllOpensRefused", FaultKind::OpenRefused, 20, 3, 2},
                    SweepRow{kRead, "Never", FaultKind::Never, 0, 2, 1},
                    SweepRow{kRead, "JustInTime", FaultKind::Late, 19, 2, 1},
                    SweepRow{kRead, "TooLate", FaultKind::Late, 41, 2, 1},
                    SweepRow{kRead, "SameMode", FaultKind::SameMode, 0, 2, 1},
                    SweepRow{kRead, "Bounce", FaultKind::Bounce, 0, 2, 1},
                    SweepRow{kErase, "Stall", FaultKind::Stall, 0, 9, 5},
                    SweepRow{kErase, "VanishBefore", FaultKind::VanishBefore, 0, 9, 5},
                    SweepRow{kErase, "VanishAfter", FaultKind::VanishAfter, 0, 9, 5},
                    SweepRow{kErase, "Ignore", FaultKind::Ignore, 0, 9, 5},
                    SweepRow{kErase, "OneOpenRefused", FaultKind::OpenRefused, 1, 3, 2},
                    SweepRow{kErase, "AllOpensRefused", FaultKind::OpenRefused, 20, 3, 2},
                    SweepRow{kErase, "Never", FaultKind::Never, 0, 2, 1},
                    SweepRow{kErase, "JustInTime", FaultKind::Late, 19, 2, 1},
                    SweepRow{kErase, "TooLate", FaultKind::Late, 41, 2, 1},
                    SweepRow{kErase, "SameMode", FaultKind::SameMode, 0, 2, 1},
                    SweepRow{kErase, "Bounce", FaultKind::Bounce, 0, 2, 1}),
    [](const auto& row) { return std::string(row.param.flow.name) + row.param.name; });

namespace
{

class AbandonedFlow : public FaultyFlow, public testing::TestWithParam<const Flow*>
{
};

} // namespace

TEST_P(AbandonedFlow, EndsAtThatRequestAndTheNextUpdateSucceeds)
{
    const Flow& flow = *GetParam();
    for (unsigned position = 1; position <= flow.requestsFromFlashCode; ++position) {
        SCOPED_TRACE(position);
        SimulatedSetup setup;
        setup.hub().onRequest = [&](const ControlRequest&) {
            if (setup.hub().requestCount() == position) {
                Hub_Abandon();
                setup.clock.interrupt();
            }
        };
        RecordingReporter reporter;
        const bool succeeded = flow.run(setup.hub(), reporter, true);
        expectItSaysSo(flow, reporter, succeeded);
        EXPECT_EQ(setup.hub().requestCount(), position);
        EXPECT_FALSE(Hub_IsOpen());
        EXPECT_EQ(succeeded, position == flow.requestsFromFlashCode)
            << "only the last open-time request completes the run";

        VirtualClock later;
        Hub_UsePlatform(*setup.bus, later);
        setup.hub().onRequest = nullptr;
        expectUpdateSucceeds(setup);
    }
}

INSTANTIATE_TEST_SUITE_P(EveryRequest, AbandonedFlow, testing::Values(&kUpdate, &kRead, &kErase),
                         [](const auto& flow) { return std::string(flow.param->name); });

namespace
{

struct LateRow {
    unsigned restart;
    int seconds;
    bool expected;
};

TEST(FaultyUpdate, WaitsTwentySecondsForTheRomCodeAndFortyForTheFlashCode)
{
    for (const LateRow& row : {LateRow{1, 20, true}, {1, 21, false}, {2, 40, true}, {2, 41, false}}) {
        SCOPED_TRACE(row.seconds);
        SimulatedSetup setup;
        setup.hub().addFault({.kind = FaultKind::Late,
                              .on = {},
                              .position = row.restart,
                              .delay = std::chrono::seconds(row.seconds)});
        RecordingReporter reporter;
        EXPECT_EQ(update(reporter), row.expected);
    }
}

TEST(FaultyUpdate, NineteenRefusedReopensAreSatOut)
{
    SimulatedSetup setup;
    setup.hub().addFault({.kind = FaultKind::OpenRefused, .on = {}, .position = 2, .amount = 19});
    RecordingReporter reporter;
    EXPECT_TRUE(update(reporter));
}

TEST(FaultyUpdate, TwentyRefusedReopensAreNot)
{
    SimulatedSetup setup;
    setup.hub().addFault({.kind = FaultKind::OpenRefused, .on = {}, .position = 2, .amount = 20});
    RecordingReporter reporter;
    EXPECT_FALSE(update(reporter));
}

} // namespace

} // namespace vornadel::test
