// Every fault at every request of a flow: the flow ends at the step in the table, reports that step
// and no false success, sends exactly the requests in the table, and an update afterwards succeeds.

#include "tests/flows/FaultTable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>

namespace vornadel::test
{

namespace
{

const std::vector<std::uint8_t> kBlank(32768, 0xFF);

struct SweepRow {
    const Flow* flow;
    FaultVariant variant;
};

void PrintTo(const SweepRow& row, std::ostream* stream)
{
    *stream << row.flow->name << row.variant.name;
}

/// Every flow with every fault that can strike its requests.
std::vector<SweepRow> everyRow()
{
    std::vector<SweepRow> rows;
    for (const Flow* flow : {&easyUpdate(), &flashRead(), &flashErase(), &driverUnload()}) {
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
    /// Tries the fault at every position of the flow.
    static void sweep(HubCode runs)
    {
        const auto& [flow, variant] = GetParam();
        const std::vector<std::size_t> places = placesOf(variant, flow->wireFrom(runs));
        EXPECT_FALSE(places.empty());
        for (const std::size_t index : places) {
            SCOPED_TRACE(index);
            SimulatedSetup setup(hubThatRuns(runs));
            setup.hub().addFault(variant.at(positionOf(variant.kind, flow->wireFrom(runs), index)));
            expectOutcome(setup, outcomeOf(*flow, runs, variant, index));
            EXPECT_EQ(setup.hub().faultsTriggered(), 1U);
            expectHealthyUpdate(setup, variant.amount);
        }
    }

private:
    static void expectOutcome(SimulatedSetup& setup, const Outcome& outcome)
    {
        const auto& [flow, variant] = GetParam();
        const FaultyRun run(*flow, setup);
        EXPECT_EQ(run.wire, asObserved(outcome.wire));
        expectTold(*flow, run.told, !outcome.fails, outcome.fails);
        const bool honest = !isDishonest(variant.kind);
        if (!flow->steps.empty()) {
            EXPECT_EQ(run.succeeded, !outcome.fails);
            expectAddress(run.told.result, outcome);
        } else if (honest && !outcome.fails) {
            EXPECT_TRUE(run.succeeded) << "the hub is not back in its flash code";
        }
        if (flow == &flashErase() && honest && run.succeeded) {
            EXPECT_TRUE(setup.hub().flash() == kBlank);
        } else if (!flow->writes()) {
            EXPECT_TRUE(setup.hub().flash() == oldFlash() ||
                        (flow == &flashErase() && setup.hub().flash() == kBlank));
        }
    }

    /// The address of the piece that failed or, for a flipped bit, of that byte.
    static void expectAddress(const FlowResult& result, const Outcome& outcome)
    {
        const auto piece = [&](char request) {
            return 4096 * (std::count(outcome.wire.begin(), outcome.wire.end(), request) - 1);
        };
        if (result.cause == Cause::RequestFailed && result.step != Step::Erase) {
            EXPECT_EQ(result.address, piece(result.step == Step::Write ? 'w' : 'r'));
        } else if (result.cause != Cause::Different) {
            EXPECT_EQ(result.address, 0U);
        }
    }
};

} // namespace

TEST_P(FaultSweep, EndsAsItMustAndTheNextUpdateSucceeds) { sweep(HubCode::Flash); }

TEST_P(FaultSweep, DoesSoOnAHubInItsRomCode) { sweep(HubCode::Rom); }

INSTANTIATE_TEST_SUITE_P(EveryRequest, FaultSweep, testing::ValuesIn(everyRow()),
                         [](const auto& row) {
                             return std::string(row.param.flow->name) + row.param.variant.name;
                         });

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
        ToldValues told;
        const bool succeeded = flow.run(setup.hub(), told);
        EXPECT_EQ(setup.hub().requestCount(), position);
        EXPECT_FALSE(Hub_IsOpen());
        if (!flow.steps.empty()) {
            expectTold(flow, told, succeeded);
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
                                         &driverUnload()),
                         [](const auto& flow) { return std::string(flow.param->name); });

} // namespace vornadel::test
