#include "standins/sim/DemoImage.h"
#include "tests/sim/HubBench.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <unistd.h>

namespace vornadel::test
{
namespace
{

using testing::ElementsAre;

/// Buses whose hubs run ROM code, without latency.
class SeveralHubs : public testing::Test
{
protected:
    std::unique_ptr<SimulatedBus> makeBus(const std::string& options, bool inMemory = true)
    {
        std::vector<SimulatedHubOptions> hubs;
        std::string error;
        EXPECT_TRUE(parseSimulatedHubs("latency=none,mode=rom," + options, hubs, error)) << error;
        for (SimulatedHubOptions& hub : hubs) {
            hub.keepInMemory = inMemory;
        }
        std::unique_ptr<SimulatedBus> bus = SimulatedBus::create(hubs, m_clock, error);
        EXPECT_NE(bus, nullptr) << error;
        return bus;
    }

    /// One hub with its flash in a file.
    std::unique_ptr<SimulatedBus> makeBusOnFile()
    {
        return makeBus("image=" + m_folder.path("hub.bin"), false);
    }

    static std::uint32_t restartIntoRom(UsbDevice& device)
    {
        ControlRequest request{0x40, 0x00, 0, 0};
        return device.control(request);
    }

    static std::uint32_t restartIntoFlash(UsbDevice& device)
    {
        ControlRequest request{0x40, 0xE9, 0x0101, 0};
        return device.control(request);
    }

    static std::vector<UsbPlace> places(UsbBus& bus)
    {
        std::vector<UsbPlace> places;
        for (const auto& device : allDevices(bus)) {
            places.push_back(device->place());
        }
        return places;
    }
    static UsbPlace firstPlace(UsbBus& bus) { return places(bus).at(0); }

    const TemporaryFolder m_folder;
    VirtualClock m_clock;
};

TEST_F(SeveralHubs, AreListedByTheirPlaces)
{
    const auto bus = makeBus("hubs=3,ids=2:1:2:3");
    std::vector<std::string> listed;
    for (const auto& device : allDevices(*bus)) {
        listed.push_back(device->place().text() + ' ' + device->texts().product + ' ' +
                         device->texts().serialNumber + ' ' + std::to_string(device->productId()));
    }
    EXPECT_THAT(listed, ElementsAre("sim-1 Demo Hub SN0001 1", "sim-1 Demo Hub SN0001 2",
                                    "sim-2 Demo Hub SN0002 2", "sim-2 Demo Hub SN0002 3",
                                    "sim-3 Demo Hub SN0003 1", "sim-3 Demo Hub SN0003 2"));
    EXPECT_EQ(allDevices(*bus)[4]->containerId(), "{5d0fc271-3a94-4e6b-9c18-27b0e463d10a}");
}

TEST_F(SeveralHubs, HaveFlashesCountersAndFaultsOfTheirOwn)
{
    const auto bus =
        makeBus("hubs=2,image=" + m_folder.path("hub.bin") + ",fault=2:stall@2", false);
    const auto device = std::move(allDevices(*bus)[2]);
    ASSERT_EQ(device->open(), UsbOpenStatus::Opened);
    ControlRequest erase{0x40, 0xE8, 0, 0};
    EXPECT_EQ(device->control(erase), 0U);
    EXPECT_EQ(device->control(erase), kSimulatedStall);
    EXPECT_EQ(bus->hub(1).requestCount(), 0U);
    EXPECT_EQ(bus->hub(2).requestCount(), 2U);
    EXPECT_EQ(m_folder.read("hub.bin"), demoImage());
    EXPECT_EQ(m_folder.read("hub-2.bin"), Bytes(kFlashSize, 0xFF));
}

TEST_F(SeveralHubs, AreNewAtTheirPlacesAfterARestartAndTellTheirEvents)
{
    const auto bus = makeBus("hubs=2");
    const std::vector<UsbPlace> before = places(*bus);
    int events = 0;
    ASSERT_TRUE(bus->watch([&](UsbEvent) { ++events; }));
    const auto device = std::move(allDevices(*bus)[2]);
    ASSERT_EQ(device->open(), UsbOpenStatus::Opened);
    restartIntoRom(*device);
    EXPECT_EQ(events, 4);
    const auto after = allDevices(*bus);
    EXPECT_FALSE(after[0]->place().hasArrivedSince(before[0]));
    EXPECT_TRUE(after[2]->place().hasArrivedSince(before[2]));
    EXPECT_EQ(after[2]->place().own.incarnation, after[3]->place().own.incarnation);
    EXPECT_TRUE(after[2]->place().isSameConnector(before[2]));
    bus->unwatch();
}

TEST_F(SeveralHubs, StayWhenTheyIgnoreARestart)
{
    const auto bus = makeBus("fault=ignored");
    const auto device = std::move(allDevices(*bus)[0]);
    const UsbPlace before = device->place();
    ASSERT_EQ(device->open(), UsbOpenStatus::Opened);
    EXPECT_EQ(restartIntoFlash(*device), 0U);
    EXPECT_EQ(firstPlace(*bus), before);
    EXPECT_EQ(bus->hub().runningCode(), HubCode::Rom);
    EXPECT_EQ(restartIntoFlash(*device), 0U) << "it is still open";
    EXPECT_TRUE(firstPlace(*bus).hasArrivedSince(before));
    EXPECT_EQ(bus->hub().runningCode(), HubCode::Flash);
}

TEST_F(SeveralHubs, TradePlacesWhenOneIsSwapped)
{
    const auto bus = makeBus("hubs=3,fault=3:swapped");
    const std::vector<UsbPlace> before = places(*bus);
    const auto device = std::move(allDevices(*bus)[4]);
    ASSERT_EQ(device->open(), UsbOpenStatus::Opened);
    EXPECT_EQ(restartIntoFlash(*device), 0U);
    const std::vector<UsbPlace> after = places(*bus);
    ASSERT_EQ(after.size(), 6U);
    EXPECT_EQ(after[0].text(), "sim-3");
    EXPECT_EQ(after[4].text(), "sim-1");
    EXPECT_TRUE(after[0].hasArrivedSince(before[4]));
    EXPECT_TRUE(after[4].hasArrivedSince(before[0]));
    EXPECT_EQ(after[2], before[2]);
    EXPECT_EQ(bus->hub(1).runningCode(), HubCode::Rom);
    EXPECT_EQ(bus->hub(3).runningCode(), HubCode::Flash);
    EXPECT_EQ(bus->hub(1).requestCount(), 0U);
}

TEST_F(SeveralHubs, MoveToAPlaceThatWasFree)
{
    const auto bus = makeBus("hubs=2,fault=moved");
    const auto device = std::move(allDevices(*bus)[0]);
    ASSERT_EQ(device->open(), UsbOpenStatus::Opened);
    EXPECT_EQ(restartIntoRom(*device), 0U);
    EXPECT_EQ(firstPlace(*bus).text(), "sim-3");
}

TEST_F(SeveralHubs, RefuseOpensForAWhile)
{
    const auto bus = makeBus("fault=refused:40");
    const auto device = std::move(allDevices(*bus)[0]);
    ASSERT_EQ(device->open(), UsbOpenStatus::Opened);
    EXPECT_EQ(restartIntoRom(*device), 0U);
    const auto back = std::move(allDevices(*bus)[0]);
    m_clock.advance(39ms);
    EXPECT_EQ(back->open(), UsbOpenStatus::Busy);
    m_clock.advance(1ms);
    EXPECT_EQ(back->open(), UsbOpenStatus::Opened);
}

TEST_F(SeveralHubs, InMemoryAreLockedOnTheirBus)
{
    const auto bus = makeBus("hubs=2");
    PlaceOwner owner;
    auto lock = bus->placeLocks().lock(firstPlace(*bus), {}, owner);
    ASSERT_NE(lock, nullptr);
    EXPECT_EQ(bus->placeLocks().lock(firstPlace(*bus), {}, owner), nullptr);
    EXPECT_EQ(owner.place, "sim-1");
    EXPECT_EQ(owner.processId, ::getpid());
    EXPECT_NE(bus->placeLocks().lock(allDevices(*bus)[2]->place(), {}, owner), nullptr);
    EXPECT_EQ(bus->placeLocks().owners().size(), 1U);
    lock.reset();
    EXPECT_TRUE(bus->placeLocks().owners().empty());
    EXPECT_NE(bus->placeLocks().lock(firstPlace(*bus), {}, owner), nullptr);
    EXPECT_EQ(bus->placeLocks().lock({{"sim-3", 1}, {}}, {}, owner), nullptr) << "no such place";
}

TEST_F(SeveralHubs, LockedOnAFileStayWithTheirOwnerOverARestart)
{
    const auto bus = makeBusOnFile();
    const auto other = makeBusOnFile();
    PlaceOwner owner;
    auto lock = bus->placeLocks().lock(firstPlace(*bus), {}, owner);
    ASSERT_NE(lock, nullptr);
    auto device = std::move(allDevices(*bus)[0]);
    ASSERT_EQ(device->open(), UsbOpenStatus::Opened);
    EXPECT_EQ(restartIntoRom(*device), 0U);
    EXPECT_EQ(allDevices(*other)[0]->open(), UsbOpenStatus::Busy);
    EXPECT_EQ(other->placeLocks().lock(firstPlace(*other), {}, owner), nullptr);
    EXPECT_EQ(owner.processId, ::getpid());
    ASSERT_EQ(other->placeLocks().owners().size(), 1U);
    EXPECT_EQ(other->placeLocks().owners()[0].processId, ::getpid());
    lock.reset();
    EXPECT_TRUE(other->placeLocks().owners().empty());
    EXPECT_NE(other->placeLocks().lock(firstPlace(*other), {}, owner), nullptr);
}

TEST_F(SeveralHubs, HaveNoOwnerThatHasDied)
{
    const auto bus = makeBusOnFile();
    m_folder.write("hub.bin.lock", Bytes{'1', '\n'}); // without a lock
    EXPECT_TRUE(bus->placeLocks().owners().empty());
    EXPECT_TRUE(m_folder.read("hub.bin.lock").empty());
}

} // namespace
} // namespace vornadel::test
