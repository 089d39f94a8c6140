// Whatever goes wrong at whatever request of a flow: it ends at the step that it must, says so to
// the letter, tells no success without it, sends what the table says and no more, and an update
// afterwards succeeds.

#include "tests/flows/FaultyRun.h"

#include "firmware/FwImage.h"
#include "flows/FirmwareUpdate.h"

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

struct SweepRow {
    const Flow* flow;
    FaultVariant variant;
};

void PrintTo(const SweepRow& row, std::ostream* stream)
{
    *stream << row.flow->name << row.variant.name;
}

/// Every flow with every fault that its requests can meet.
std::vector<SweepRow> everyRow()
{
    std::vector<SweepRow> rows;
    for (const Flow* flow :
         {&easyUpdate(), &flashRead(), &flashErase(), &scalarUpdate(), &driverUnload()}) {
        for (const FaultVariant& variant : kFaultVariants) {
            if (!placesOf(variant, flow->wireFrom(HubCode::Flash)).empty()) {
                rows.push_back({flow, variant});
            }
        }
    }
    return rows;
}

class FaultSweep : public testing::TestWithParam<SweepRow>
{
protected:
    /// Tries the fault in every place of the flow.
    static void sweep(HubCode runs)
    {
        const auto& [flow, variant] = GetParam();
        const std::vector<std::size_t> places = placesOf(variant, flow->wireFrom(runs));
        SweepCount count;
        for (const std::size_t index : places) {
            SCOPED_TRACE(index);
            SimulatedSetup setup(hubThatRuns(runs));
            setup.hub().addFault(variant.at(positionOf(variant.kind, flow->wireFrom(runs), index)));
            expectOutcome(setup, outcomeOf(*flow, runs, variant, index));
            count.ran();
            count.fired(setup.hub().faultsTriggered());
            expectHealthyUpdate(setup, variant.amount);
        }
        count.expect(places.size(), places.size());
    }

private:
    static void expectOutcome(SimulatedSetup& setup, const Outcome& outcome)
    {
        const auto& [flow, variant] = GetParam();
        const FlowRun run(*flow, setup);
        EXPECT_EQ(run.wire, asObserved(outcome.wire));
        expectTold(*flow, run.told, !outcome.fails, outcome.fails);
        const bool honest = !isDishonest(variant.kind);
        if (!flow->steps.empty()) {
            EXPECT_EQ(run.succeeded, !outcome.fails);
        } else if (honest && !outcome.fails) {
            EXPECT_TRUE(run.succeeded) << "the hub is not back in its flash code";
        }
        if (flow == &flashErase() && honest && run.succeeded) {
            EXPECT_TRUE(setup.hub().flash() == kBlank);
        } else if (!flow->writes) {
            EXPECT_TRUE(setup.hub().flash() == oldFlash() ||
                        (flow == &flashErase() && setup.hub().flash() == kBlank));
        }
        setup.hub().unplug();
        setup.hub().replug();
        EXPECT_EQ(setup.hub().runningCode(), outcome.afterwards);
    }
};

} // namespace

TEST_P(FaultSweep, EndsAsItMustAndTheNextUpdateSucceeds) { sweep(HubCode::Flash); }

TEST_P(FaultSweep, DoesSoOnAHubInItsRomCode) { sweep(HubCode::Rom); }

INSTANTIATE_TEST_SUITE_P(EveryRequest, FaultSweep, testing::ValuesIn(everyRow()),
                         [](const auto& row) {
                             return std::string(row.param.flow->name) + row.param.variant.name;
                         });

TEST(FaultSweepInAll, HasThisManyFaults)
{
    std::size_t faults = 0;
    for (const SweepRow& row : everyRow()) {
        for (const HubCode runs : {HubCode::Flash, HubCode::Rom}) {
            faults += placesOf(row.variant, row.flow->wireFrom(runs)).size();
        }
    }
    EXPECT_EQ(faults, 940U);
}

namespace
{

class AbandonedFlow : public testing::TestWithParam<const Flow*>
{
};

} // namespace

TEST_P(AbandonedFlow, EndsAtThatRequestAndTheNextUpdateSucceeds)
{
    const Flow& flow = *GetParam();
    const std::size_t requests = flow.wireFrom(HubCode::Flash).size();
    for (std::size_t position = 1; position <= requests; ++position) {
        SCOPED_TRACE(position);
        SimulatedSetup setup(hubThatRuns(HubCode::Flash));
        setup.hub().onRequest = [&](const ControlRequest&) {
            if (setup.hub().requestCount() == position) {
                Hub_Abandon();
                setup.clock.interrupt();
            }
        };
        RecordingReporter reporter;
        const bool succeeded = flow.run(setup.hub(), reporter);
        EXPECT_EQ(setup.hub().requestCount(), position);
        EXPECT_FALSE(Hub_IsOpen());
        if (!flow.steps.empty()) {
            expectTold(flow, reporter, succeeded);
            EXPECT_EQ(succeeded, position == requests)
                << "only the last open-time request completes the run";
        }

        VirtualClock later;
        Hub_UsePlatform(*setup.bus, later);
        setup.hub().onRequest = nullptr;
        expectHealthyUpdate(setup);
    }
}

INSTANTIATE_TEST_SUITE_P(EveryRequest, AbandonedFlow,
                         testing::Values(&easyUpdate(), &flashRead(), &flashErase(),
                                         &scalarUpdate(), &driverUnload()),
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
    for (const LateRow& row :
         {LateRow{1, 20, true}, {1, 21, false}, {2, 40, true}, {2, 41, false}}) {
        SCOPED_TRACE(row.seconds);
        SimulatedSetup setup;
        setup.hub().addFault({.kind = FaultKind::Late,
                              .on = {},
                              .position = row.restart,
                              .delay = std::chrono::seconds(row.seconds)});
        EXPECT_EQ(FlowRun(easyUpdate(), setup).succeeded, row.expected);
    }
}

TEST(FaultyUpdate, NineteenRefusedReopensAreSatOut)
{
    SimulatedSetup setup;
    setup.hub().addFault({.kind = FaultKind::OpenRefused, .on = {}, .position = 2, .amount = 19});
    EXPECT_TRUE(FlowRun(easyUpdate(), setup).succeeded);
}

TEST(FaultyUpdate, TwentyRefusedReopensAreNot)
{
    SimulatedSetup setup;
    setup.hub().addFault({.kind = FaultKind::OpenRefused, .on = {}, .position = 2, .amount = 20});
    EXPECT_FALSE(FlowRun(easyUpdate(), setup).succeeded);
}

struct RefusedImage {
    const char* name;
    std::vector<std::uint8_t> bytes;
};

TEST(FaultyUpdate, SendsNothingForAnImageThatIsNotAccepted)
{
    const std::vector<std::uint8_t> text{'n', 'o', ' ', 'i', 'm', 'a', 'g', 'e'};
    std::vector<std::uint8_t> cut(newFlash().begin(),
                                  newFlash().begin() + 0x7E80); // within the descriptor block
    for (const RefusedImage& refused :
         {RefusedImage{"none", {}}, {"text", text}, {"blank", kBlank}, {"cut", cut}}) {
        for (const HubCode code : {HubCode::Flash, HubCode::Rom}) {
            SCOPED_TRACE(refused.name);
            SimulatedSetup setup(hubThatRuns(code));
            FwImage image;
            EXPECT_FALSE(FwImage_Parse(image, refused.bytes.data(),
                                       static_cast<std::int32_t>(refused.bytes.size())));
            RecordingReporter reporter;
            EXPECT_FALSE(updateFirmware(image, "demo.bin", reporter));
            EXPECT_EQ(setup.hub().requestCount(), 0U);
            EXPECT_EQ(reporter.texts(Kind::Red),
                      (std::vector<std::string>{"Wrong firmware file\n", "Update FW Fail\n"}));
            EXPECT_TRUE(setup.clock.pauses().empty());
            EXPECT_TRUE(setup.hub().flash() == oldFlash());
        }
    }
}

} // namespace

} // namespace vornadel::test
