#include "standins/sim/DemoImage.h"
#include "tests/sim/HubBench.h"

#include <gtest/gtest.h>
#include <utility>

namespace vornadel::test
{
namespace
{

using Ids = std::vector<std::pair<int, int>>;

Ids idsOn(UsbBus& bus)
{
    Ids ids;
    for (const auto& device : allDevices(bus)) {
        ids.emplace_back(device->vendorId(), device->productId());
    }
    return ids;
}

TEST(SimulatedBus, ListsTheSuperSpeedDeviceFirst)
{
    HubBench bench;
    EXPECT_EQ(idsOn(*bench.bus), (Ids{{0x1209, 0x0001}, {0x1209, 0x0002}}));
}

TEST(SimulatedBus, ReachesTheSameControllerThroughBothDevices)
{
    HubBench bench;
    auto devices = allDevices(*bench.bus);
    bench.device = std::move(devices[1]);
    ASSERT_EQ(bench.device->open(), UsbOpenStatus::Opened);
    EXPECT_EQ(bench.erase(), 0U);
    ASSERT_EQ(devices[0]->open(), UsbOpenStatus::Opened);
    Bytes buffer(1);
    ControlRequest request{0xC0, 0xD8, 0, 0, {}, buffer};
    EXPECT_EQ(devices[0]->control(request), 0U);
    EXPECT_EQ(buffer[0], 0xFF);
}

TEST(Restart, TakesTheIdsOfTheNewImage)
{
    HubBench bench;
    Bytes image = demoImage(0x0200);
    const Bytes ids = {0x1A, 0x2B, 0x3C, 0x4D, 0x5E, 0x6F};
    std::copy(ids.begin(), ids.end(), image.begin() + 0x7E02);
    ASSERT_TRUE(bench.hub().setFlash(image));
    EXPECT_EQ(idsOn(*bench.bus), (Ids{{0x1209, 0x0001}, {0x1209, 0x0002}}));
    ASSERT_TRUE(bench.open());
    bench.restartIntoFlash();
    EXPECT_EQ(idsOn(*bench.bus), (Ids{{0x1A2B, 0x3C4D}, {0x1A2B, 0x5E6F}}));
}

TEST(Plug, PulledBetweenTheTwoDevicesBringsOnlyTheFirst)
{
    HubBench bench;
    std::vector<UsbEvent> events;
    bench.hub().unplug();
    ASSERT_TRUE(bench.bus->watch([&](UsbEvent event) {
        events.push_back(event);
        if (event == UsbEvent::Attached) {
            bench.hub().unplug();
        }
    }));
    bench.hub().replug();
    EXPECT_EQ(events, (std::vector{UsbEvent::Attached, UsbEvent::Detached}));
    EXPECT_TRUE(allDevices(*bench.bus).empty());
    bench.bus->unwatch();
}

TEST(Plug, PutBackInMidRestartComesOnce)
{
    SimulatedHubOptions options = romOptions();
    options.latency = SimulatedLatency::Real;
    options.mode = HubCode::Flash;
    HubBench bench(options);
    int arrivals = 0;
    ASSERT_TRUE(
        bench.bus->watch([&](UsbEvent event) { arrivals += event == UsbEvent::Attached ? 1 : 0; }));
    ASSERT_TRUE(bench.open());
    bench.restartIntoRom();
    bench.hub().unplug();
    bench.hub().replug();
    ASSERT_TRUE(bench.open());
    bench.clock.advance(10s);
    EXPECT_EQ(arrivals, 2);
    EXPECT_FALSE(bench.runsRom());
    bench.bus->unwatch();
}

} // namespace
} // namespace vornadel::test
