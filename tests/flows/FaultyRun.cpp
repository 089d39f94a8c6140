#include "tests/flows/FaultyRun.h"

#include <gtest/gtest.h>

#include <chrono>

namespace vornadel::test
{

using namespace std::chrono_literals;

SimulatedHubOptions hubThatRuns(HubCode code, const std::vector<std::uint8_t>& flash)
{
    SimulatedHubOptions options;
    options.mode = code;
    options.initialFlash = flash;
    return options;
}

FaultyRun::FaultyRun(const Flow& flow, SimulatedSetup& setup)
{
    setup.hub().onRequest = [&](const ControlRequest& request) {
        if (wire.empty() && !flow.steps.empty()) {
            EXPECT_EQ(told.steps, std::vector<Step>{Step::Open});
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
    if (succeeded && flow.writes()) {
        EXPECT_TRUE(setup.hub().flash() == newFlash()) << "success was told";
    }
}

void powerUp(SimulatedSetup& setup, unsigned opensStillRefused)
{
    setup.hub().replug();
    setup.clock.advance(60s); // late returns and bounces are over
    for (unsigned refused = 0; refused < opensStillRefused && !Hub_OpenDevice(); ++refused) {
    }
    Hub_CloseDevice();
}

void expectHealthyUpdate(SimulatedSetup& setup, unsigned opensStillRefused)
{
    powerUp(setup, opensStillRefused);
    const FaultyRun run(easyUpdate(), setup);
    EXPECT_TRUE(run.succeeded);
    expectTold(easyUpdate(), run.told, true);
    EXPECT_TRUE(setup.hub().flash() == newFlash());
    EXPECT_EQ(setup.hub().runningCode(), HubCode::Flash);
}

} // namespace vornadel::test
