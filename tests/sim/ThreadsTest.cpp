#include "platform/StdClock.h"
#include "standins/sim/DemoImage.h"
#include "tests/sim/HubBench.h"

#include <atomic>
#include <gtest/gtest.h>
#include <thread>

namespace vornadel::test
{
namespace
{

constexpr int kRounds = 200;

/// Sends one request through a device that this thread opened itself; false when it could not be
/// opened.
bool visit(UsbBus& bus, ControlRequest request)
{
    for (const auto& device : listDevices(bus)) {
        if (device->open() == UsbOpenStatus::Opened) {
            device->control(request);
            device->close();
            return true;
        }
    }
    return false;
}

TEST(SimulatedBusThreads, SearchAndOpenWhileTheHubRestarts)
{
    StdClock clock;
    std::string error;
    SimulatedHubOptions options = romOptions();
    for (unsigned restart = 1; restart <= kRounds; restart += 2) { // every other one returns on the
                                                                   // clock's thread
        options.faults.push_back({FaultKind::Late, {}, restart, 0, 50us});
    }
    const auto bus = SimulatedBus::create(options, clock, error);
    ASSERT_NE(bus, nullptr) << error;
    std::atomic<int> arrivals = 0;
    std::atomic<int> departures = 0;
    ASSERT_TRUE(bus->watch(
        [&](UsbEvent event) { ++(event == UsbEvent::Attached ? arrivals : departures); }));

    std::atomic<bool> done = false;
    std::atomic<int> detections = 0;
    std::thread detection([&] {
        while (!done) {
            std::array<std::uint8_t, 32> block{};
            detections += visit(*bus, {0xC0, 0x09, 0, 0, {}, block}) ? 1 : 0;
        }
    });
    int restarts = 0;
    while (restarts < kRounds || detections == 0) {
        const bool intoRom = restarts % 2 == 0;
        const ControlRequest restart =
            intoRom ? ControlRequest{0x40, 0x00, 0, 0} : ControlRequest{0x40, 0xE9, 0x0101, 0};
        const int before = departures;
        visit(*bus, restart);
        restarts += departures != before ? 1 : 0;
    }
    done = true;
    detection.join();
    bus->hub().unplug();
    const int seen = arrivals + departures;
    bus->unwatch();
    bus->hub().replug();
    EXPECT_EQ(arrivals + departures, seen);
    EXPECT_EQ(listDevices(*bus).size(), 2U);
    EXPECT_EQ(bus->hub().flash(), demoImage());
}

TEST(SimulatedBusThreads, UnwatchWaitsForTheListener)
{
    const HubBench bench;
    std::atomic<bool> inside = false;
    std::atomic<bool> ending = false;
    std::atomic<bool> finished = false;
    std::atomic<int> calls = 0;
    ASSERT_TRUE(bench.bus->watch([&](UsbEvent) {
        ++calls;
        inside = true;
        while (!ending) {
            std::this_thread::yield();
        }
        for (int i = 0; i < 10000; ++i) { // long enough for an unwatch() that does not wait
            std::this_thread::yield();
        }
        finished = true;
    }));
    std::thread plug([&] { bench.hub().unplug(); });
    while (!inside) {
        std::this_thread::yield();
    }
    ending = true;
    bench.bus->unwatch();
    EXPECT_TRUE(finished);
    plug.join();
    EXPECT_EQ(calls, 1); // the second device's event came too late
}

} // namespace
} // namespace vornadel::test
