#include "tests/flows/FaultyRun.h"

#include <gtest/gtest.h>

#include <chrono>
#include <iostream>

namespace vornadel::test
{

using namespace std::chrono_literals;
using Kind = RecordingReporter::Kind;

namespace
{

/// Of all sweeps of this program.
class Totals final : public testing::Environment
{
public:
    void TearDown() override
    {
        if (runs > 0) {
            std::cout << "fault sweeps in all: " << runs << " runs, " << fired << " faults fired\n";
        }
    }

    unsigned runs = 0;
    unsigned fired = 0;
};

Totals& totals()
{
    static auto* const instance =
        dynamic_cast<Totals*>(testing::AddGlobalTestEnvironment(new Totals)); // the framework's
                                                                              // from here on
    return *instance;
}

[[maybe_unused]] const Totals& registered = totals();

} // namespace

void SweepCount::expect(std::size_t runs, std::size_t fired) const
{
    std::cout << "fault sweep: " << m_runs << " runs of " << runs << ", " << m_fired
              << " faults fired of " << fired << '\n';
    totals().runs += m_runs;
    totals().fired += m_fired;
    EXPECT_GT(runs, 0U);
    EXPECT_EQ(m_runs, runs);
    EXPECT_EQ(m_fired, fired);
}

SimulatedHubOptions hubThatRuns(HubCode code, const std::vector<std::uint8_t>& flash)
{
    SimulatedHubOptions options;
    options.mode = code;
    options.initialFlash = flash;
    return options;
}

FlowRun::FlowRun(const Flow& flow, SimulatedSetup& setup)
{
    setup.hub().onRequest = [&](const ControlRequest& request) {
        if (wire.empty() && !flow.steps.empty()) {
            EXPECT_EQ(told.texts(Kind::Blue), std::vector<std::string>{flow.steps.front().begins});
        }
        wire += observedLetter(request);
    };
    const Clock::Duration begun = setup.clock.now();
    succeeded = flow.run(setup.hub(), told);
    setup.hub().onRequest = nullptr;
    EXPECT_LE(setup.clock.now() - begun, longestFor(wire));
    EXPECT_FALSE(Hub_IsOpen());
    if (succeeded && !flow.steps.empty()) {
        EXPECT_TRUE(wire.ends_with("fh")) << wire << ": the restarted hub was not seen";
    }
    if (succeeded && flow.writes) {
        EXPECT_TRUE(setup.hub().flash() == newFlash()) << "success was told";
    }
}

void expectHealthyUpdate(SimulatedSetup& setup, unsigned opensStillRefused)
{
    setup.hub().replug();
    setup.clock.advance(60s); // whatever was late or bouncing is over
    for (unsigned refused = 0; refused < opensStillRefused && !Hub_OpenDevice(); ++refused) {
    }
    Hub_CloseDevice();
    const FlowRun run(easyUpdate(), setup);
    EXPECT_TRUE(run.succeeded);
    expectTold(easyUpdate(), run.told, true);
    EXPECT_TRUE(setup.hub().flash() == newFlash());
    EXPECT_EQ(setup.hub().runningCode(), HubCode::Flash);
}

} // namespace vornadel::test
