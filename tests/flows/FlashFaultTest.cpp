// Whatever goes wrong at whatever request of a read or an erase: no success is told without it, the hub is closed, and
// an update afterwards succeeds.

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

/// One of the two flows, with what must hold after it.
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

constexpr Flow kRead{"Read", readAndLook, "Read Fw Success\n", "Read Fw Fail\n", 16, 12};
constexpr Flow kErase{"Erase", eraseAndLook, "Erase FW Success\n", "\nErase FW Fail\n", 9, 5};

SimulatedHubOptions hubThatRuns(HubCode code)
{
    SimulatedHubOptions options;
    options.mode = code;
    return options;
}

class FaultyFlashFlow
{
protected:
    FaultyFlashFlow() : m_bytes(demoImage(kDemoVersion101))
    {
        EXPECT_TRUE(FwImage_Parse(m_image, m_bytes.data(), static_cast<std::int32_t>(m_bytes.size())));
    }

    /// Runs a flow with one fault in it, then an update without. True when the fault happened.
    bool survives(const Flow& flow, const Fault& fault, HubCode runs)
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

    void expectUpdateSucceeds(SimulatedSetup& setup)
    {
        RecordingReporter healthy;
        EXPECT_TRUE(updateFirmware(m_image, "demo.bin", healthy));
        EXPECT_EQ(setup.hub().flash(), m_bytes);
        EXPECT_EQ(setup.hub().runningCode(), HubCode::Flash);
    }

private:
    std::vector<std::uint8_t> m_bytes;
    FwImage m_image;
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

class FlashFaultSweep : public FaultyFlashFlow, public testing::TestWithParam<SweepRow>
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

TEST_P(FlashFaultSweep, TellsNoFalseSuccessAndTheNextUpdateSucceeds)
{
    EXPECT_EQ(sweep(HubCode::Flash, GetParam().flow.requestsFromFlashCode), GetParam().fromFlashCode);
}

TEST_P(FlashFaultSweep, DoesNotEitherOnAHubInItsRomCode)
{
    EXPECT_EQ(sweep(HubCode::Rom, GetParam().flow.requestsFromRomCode), GetParam().fromRomCode);
}

INSTANTIATE_TEST_SUITE_P(EveryRequest, FlashFaultSweep,
                         testing::Values(SweepRow{kRead, "Stall", FaultKind::Stall, 0, 16, 12},
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
                                         SweepRow{kErase, "AllOpensRefused", FaultKind::OpenRefused, 20, 3,
                                                  2},
                                         SweepRow{kErase, "Never", FaultKind::Never, 0, 2, 1},
                                         SweepRow{kErase, "JustInTime", FaultKind::Late, 19, 2, 1},
                                         SweepRow{kErase, "TooLate", FaultKind::Late, 41, 2, 1},
                                         SweepRow{kErase, "SameMode", FaultKind::SameMode, 0, 2, 1},
                                         SweepRow{kErase, "Bounce", FaultKind::Bounce, 0, 2, 1}),
                         [](const auto& row) { return std::string(row.param.flow.name) + row.param.name; });

namespace
{

class AbandonedFlashFlow : public FaultyFlashFlow, public testing::TestWithParam<const Flow*>
{
};

} // namespace

TEST_P(AbandonedFlashFlow, EndsAtThatRequestAndTheNextUpdateSucceeds)
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

INSTANTIATE_TEST_SUITE_P(EveryRequest, AbandonedFlashFlow, testing::Values(&kRead, &kErase),
                         [](const auto& flow) { return std::string(flow.param->name); });

} // namespace vornadel::test
