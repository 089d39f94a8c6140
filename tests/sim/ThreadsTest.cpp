#include "tests/sim/HubBench.h"

#include <atomic>
#include <gtest/gtest.h>
#include <thread>

namespace vornadel::test
{
namespace
{

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
        for (int i = 0; i < 10000; ++i) { // long enough to notice an unwatch() that does not wait
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
