// A loose plug: the hub leaves and returns a hundred times within one second, during an update.

#include "hub/HubDetection.h"
#include "tests/flows/FlowTable.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>

namespace vornadel::test
{

namespace
{

using namespace std::chrono_literals;

constexpr int kCycles = 100;
constexpr unsigned kMostUpdates = 1000000;

/// A hub with real timing, so that plugs also come loose while it erases and writes.
SimulatedHubOptions slowHub(HubCode runs)
{
    SimulatedHubOptions options = hubThatRuns(runs);
    options.keepInMemory = true;
    return options;
}

class Storm : public testing::TestWithParam<HubCode>
{
protected:
    /// Runs an update in which `storm` begins at a request; returns whether it succeeded.
    void updateWith(std::size_t position, const std::function<void(HubSetup&)>& storm,
                    bool succeeds)
    {
        SCOPED_TRACE(position);
        HubSetup setup(slowHub(GetParam()));
        SimulatedHub& hub = setup.bus->hub();
        int departures = 0;
        setup.bus->watch(
            [&](UsbEvent event) { departures += event == UsbEvent::Detached ? 1 : 0; });
        hub.onRequest = [&](const ControlRequest&) {
            if (hub.requestCount() == position) {
                storm(setup);
            }
        };
        const Clock::Duration begun = setup.clock.now();
        ToldValues told;
        const bool succeeded = easyUpdate().run(hub, told);
        expectTold(easyUpdate(), told, succeeded);
        EXPECT_EQ(succeeded, succeeds);
        EXPECT_FALSE(Hub_IsOpen());
        EXPECT_LE(setup.clock.now() - begun, longestFor("mf") + 1s);

        setup.clock.advance(60s);
        setup.bus->unwatch();
        EXPECT_GE(departures, 2 * kCycles) << "both devices, each time";
        hub.onRequest = nullptr;
        ToldValues healthy;
        EXPECT_TRUE(easyUpdate().run(hub, healthy));
        EXPECT_TRUE(hub.flash() == newFlash());
    }
};

} // namespace

TEST_P(Storm, InOneSecondOfAnUpdateLeavesItTruthful)
{
    const std::string wire = easyUpdate().wireFrom(GetParam());
    const auto inOneSecond = [](HubSetup& setup) {
        SimulatedHub& hub = setup.bus->hub();
        for (int cycle = 0; cycle < kCycles; ++cycle) {
            setup.clock.after(cycle * 10ms, [&hub] { hub.unplug(); });
            setup.clock.after(cycle * 10ms + 5ms, [&hub] { hub.replug(); });
        }
    };
    for (std::size_t index = 0; index < wire.size(); ++index) {
        // Reading takes no time on the simulated hub, so a storm that begins there comes after it.
        updateWith(index + 1, inOneSecond, wire.find_first_of("rfH") <= index);
    }
}

INSTANTIATE_TEST_SUITE_P(OfPlugs, Storm, testing::Values(HubCode::Flash, HubCode::Rom),
                         [](const auto& runs) {
                             return std::string(runs.param == HubCode::Flash ? "FromFlashCode"
                                                                             : "FromRomCode");
                         });

TEST(StormOfPlugs, OnAnotherThreadLeavesUpdatesAndDetectionsTruthful)
{
    SimulatedSetup setup(hubThatRuns(HubCode::Flash));
    SimulatedHub& hub = setup.hub();
    std::atomic<unsigned> requests = 0;
    std::atomic<bool> over = false;
    std::atomic<int> arrivals = 0;
    std::atomic<int> departures = 0;
    setup.bus->watch(
        [&](UsbEvent event) { ++(event == UsbEvent::Attached ? arrivals : departures); });
    hub.onRequest = [&](const ControlRequest&) { ++requests; };

    std::thread storm([&] {
        for (int cycle = 0; cycle < kCycles; ++cycle) {
            const unsigned seen = requests;
            while (requests == seen && !over) { // an update goes on
                std::this_thread::yield();
            }
            hub.unplug();
            hub.replug(cycle % 2 == 0 ? HubCode::Flash : HubCode::Rom);
        }
        over = true;
    });
    std::thread detection([&] { // like the window at every event
        int seen = 0;
        while (!over) {
            if (const int events = arrivals + departures; events != seen) {
                seen = events;
                Hub_Detect();
            } else {
                std::this_thread::yield();
            }
        }
    });
    unsigned updates = 0;
    while (!over && updates < kMostUpdates) {
        ToldValues told;
        const bool succeeded = easyUpdate().run(hub, told);
        expectTold(easyUpdate(), told, succeeded);
        ++updates;
    }
    over = true;
    storm.join();
    detection.join();
    setup.bus->unwatch();
    EXPECT_FALSE(Hub_IsOpen());
    EXPECT_GE(departures, 2 * kCycles);
    EXPECT_EQ(arrivals, departures);
    EXPECT_GT(updates, 0U);
    EXPECT_LT(updates, kMostUpdates) << "no update reaches the hub any more";
    hub.onRequest = nullptr;
    expectHealthyUpdate(setup);
}

} // namespace vornadel::test
