#include "standins/sim/DemoImage.h"
#include "tests/sim/HubBench.h"

#include <gtest/gtest.h>
#include <utility>

namespace vornadel::test
{
namespace
{

using Ids = std::vector<std::pair<int, int>>;
using Events = std::vector<UsbEvent>;

constexpr UsbEvent kAttached = UsbEvent::Attached;
constexpr UsbEvent kDetached = UsbEvent::Detached;

SimulatedHubOptions realOptions(HubCode code)
{
    SimulatedHubOptions options = romOptions();
    options.latency = SimulatedLatency::Real;
    options.mode = code;
    return options;
}

Ids idsOn(UsbBus& bus)
{
    Ids ids;
    for (const auto& device : listDevices(bus)) {
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
    auto devices = listDevices(*bench.bus);
    bench.device = std::move(devices[1]);
    ASSERT_EQ(bench.device->open(), UsbOpenStatus::Opened);
    EXPECT_EQ(bench.erase(), 0U);
    ASSERT_EQ(devices[0]->open(), UsbOpenStatus::Opened);
    Bytes buffer(1);
    ControlRequest request{0xC0, 0xD8, 0, 0, {}, buffer};
    EXPECT_EQ(devices[0]->control(request), 0U);
    EXPECT_EQ(buffer[0], 0xFF);
}

TEST(Restart, KillsEveryHandle)
{
    HubBench bench;
    auto stale = listDevices(*bench.bus);
    ASSERT_EQ(stale[1]->open(), UsbOpenStatus::Opened);
    ASSERT_TRUE(bench.open());
    EXPECT_EQ(bench.restartIntoRom(), 0U);
    EXPECT_NE(bench.openTime(), 0U);
    ControlRequest request{0x40, 0xE8, 0, 0};
    EXPECT_EQ(stale[1]->control(request), kSimulatedNoDevice);
    EXPECT_EQ(stale[0]->open(), UsbOpenStatus::Gone);
    EXPECT_EQ(bench.hub().flash(), demoImage());

    auto fresh = listDevices(*bench.bus);
    EXPECT_EQ(fresh[1]->open(), UsbOpenStatus::Opened);
    stale[1]->close(); // does not close the new handle's device
    EXPECT_EQ(listDevices(*bench.bus)[1]->open(), UsbOpenStatus::Busy);
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

TEST(Notification, KeepsItsOrderWhenTheListenerCausesMore)
{
    HubBench bench;
    Events events;
    ASSERT_TRUE(bench.bus->watch([&](UsbEvent event) {
        events.push_back(event);
        if (events.size() == 1) {
            bench.hub().replug();
        }
    }));
    bench.hub().unplug();
    EXPECT_EQ(events, (Events{kDetached, kDetached, kAttached, kAttached}));
    bench.bus->unwatch();
}

TEST(Plug, PulledBetweenTheTwoDevicesBringsOnlyTheFirst)
{
    HubBench bench;
    Events events;
    bench.hub().unplug();
    ASSERT_TRUE(bench.bus->watch([&](UsbEvent event) {
        events.push_back(event);
        if (event == kAttached) {
            bench.hub().unplug();
        }
    }));
    bench.hub().replug();
    EXPECT_EQ(events, (Events{kAttached, kDetached}));
    EXPECT_TRUE(listDevices(*bench.bus).empty());
    bench.bus->unwatch();
}

TEST(Plug, PulledBeforeItBouncesStaysAway)
{
    HubBench bench(withFault("bounce", realOptions(HubCode::Flash)));
    ASSERT_TRUE(bench.open());
    bench.restartIntoRom();
    bench.clock.advance(700ms);
    ASSERT_EQ(listDevices(*bench.bus).size(), 2U);
    bench.hub().unplug();
    bench.clock.advance(10s);
    EXPECT_TRUE(listDevices(*bench.bus).empty());
}

TEST(Plug, PutBackInMidRestartComesOnce)
{
    HubBench bench(realOptions(HubCode::Flash));
    int arrivals = 0;
    ASSERT_TRUE(bench.bus->watch([&](UsbEvent event) { arrivals += event == kAttached ? 1 : 0; }));
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
