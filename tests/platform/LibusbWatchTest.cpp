#include "platform/linux/LibusbBus.h"
#include "tests/platform/UsbTestbed.h"
#include "tests/support/PlugEvents.h"
#include "tests/support/UsbDevices.h"
#include "tests/support/VirtualClock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <thread>

namespace vornadel::test
{

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

constexpr Clock::Duration kSecond = std::chrono::seconds(1);

class LibusbWatchTest : public testing::Test
{
protected:
    LibusbWatchTest() { m_testbed.plug("1-9", 0xBEAD, 0x0001); }

    void plug(const std::string& port) { m_testbed.plug(port, kVendorId, kProductId); }

    /// Opens the device and sends a request, during which libusb handles events on this thread.
    void exchangeRequest(LibusbBus& bus)
    {
        const auto device = findDevice(bus, kVendorId, kProductId);
        ASSERT_NE(device, nullptr);
        ASSERT_EQ(device->open(), UsbOpenStatus::Opened);
        ControlRequest request{.bmRequestType = 0x40};
        EXPECT_EQ(device->control(request), 0U);
    }

    UsbTestbed m_testbed;
    VirtualClock m_clock;
    PlugEvents m_events;
};

class PollingWatchTest : public LibusbWatchTest
{
protected:
    LibusbBus m_bus{m_clock, {.forcePolling = true}};
};

class HotplugWatchTest : public LibusbWatchTest
{
protected:
    LibusbBus m_bus{m_clock};
};

TEST_F(HotplugWatchTest, NeverReportsOnTheThreadOfATransfer)
{
    ASSERT_TRUE(m_bus.watch(m_events.listener()));
    for (int i = 0; i < 20; ++i) {
        const std::size_t before = m_events.all().size();
        plug("1-1");
        exchangeRequest(m_bus);
        ASSERT_TRUE(m_events.waitFor(UsbEvent::Attached, before));
        ASSERT_NE(m_events.thread(), std::this_thread::get_id());
        m_testbed.unplug("1-1");
        ASSERT_TRUE(m_events.waitFor(UsbEvent::Detached, before));
    }
    m_bus.unwatch();
}

TEST_F(HotplugWatchTest, StaysSilentAfterTheWatchEvenWhileRequestsPass)
{
    ASSERT_TRUE(m_bus.watch(m_events.listener()));
    m_bus.unwatch();
    plug("1-1");
    exchangeRequest(m_bus);
    EXPECT_THAT(m_events.all(), IsEmpty());
}

TEST_F(HotplugWatchTest, ForgetsWhatCameBetweenTwoWatches)
{
    ASSERT_TRUE(m_bus.watch([](UsbEvent) {}));
    m_bus.unwatch();
    plug("1-1");
    EXPECT_EQ(allDevices(m_bus).size(), 2U);
    ASSERT_TRUE(m_bus.watch(m_events.listener()));
    m_testbed.unplug("1-1");
    ASSERT_TRUE(m_events.waitFor(UsbEvent::Detached));
    m_bus.unwatch();
    EXPECT_THAT(m_events.all(), ElementsAre(UsbEvent::Detached));
}

TEST_F(HotplugWatchTest, EndsWhileATransferIsInFlight)
{
    SimulatedNode& node = m_testbed.plug(
        "1-1", kVendorId, kProductId, [](const WireRequest&) { return WireAnswer{.never = true}; });
    ASSERT_TRUE(m_bus.watch(m_events.listener()));
    const auto device = findDevice(m_bus, kVendorId, kProductId);
    ASSERT_NE(device, nullptr);
    ASSERT_EQ(device->open(), UsbOpenStatus::Opened);
    ControlRequest request{.bmRequestType = 0x40};
    std::uint32_t status = 0;
    std::thread flow([&] { status = device->control(request); });
    EXPECT_TRUE(node.waitForRequests(1));
    m_bus.unwatch(); // long before the time-out of the transfer
    m_testbed.unplug("1-1");
    flow.join();
    EXPECT_EQ(status, 0xFFFFFFFCU); // no device
}

TEST_F(HotplugWatchTest, TheEndOfTheBusEndsTheWatch)
{
    {
        LibusbBus bus(m_clock);
        ASSERT_TRUE(bus.watch(m_events.listener()));
    }
    plug("1-1");
    EXPECT_THAT(m_events.all(), IsEmpty());
}

TEST_F(PollingWatchTest, LooksOnceASecond)
{
    ASSERT_TRUE(m_bus.watch(m_events.listener()));
    plug("1-1");
    m_clock.advance(kSecond - Clock::Duration(1));
    EXPECT_THAT(m_events.all(), IsEmpty());
    m_clock.advance(Clock::Duration(1));
    EXPECT_THAT(m_events.all(), ElementsAre(UsbEvent::Attached));
    m_testbed.unplug("1-1");
    m_clock.advance(kSecond);
    EXPECT_THAT(m_events.all(), ElementsAre(UsbEvent::Attached, UsbEvent::Detached));
    m_clock.advance(10 * kSecond);
    EXPECT_EQ(m_events.all().size(), 2U);
}

TEST_F(PollingWatchTest, CountsEveryDevice)
{
    ASSERT_TRUE(m_bus.watch(m_events.listener()));
    plug("1-1");
    plug("1-2");
    m_testbed.unplug("1-9");
    m_clock.advance(kSecond);
    EXPECT_THAT(m_events.all(),
                ElementsAre(UsbEvent::Detached, UsbEvent::Attached, UsbEvent::Attached));
}

TEST_F(PollingWatchTest, SeesAReturnBetweenTwoLooks)
{
    plug("1-1");
    ASSERT_TRUE(m_bus.watch(m_events.listener()));
    m_testbed.unplug("1-1");
    plug("1-1");
    m_clock.advance(kSecond);
    EXPECT_THAT(m_events.all(), ElementsAre(UsbEvent::Detached, UsbEvent::Attached));
}

TEST_F(PollingWatchTest, TheClockMayOutliveTheBus)
{
    {
        LibusbBus bus(m_clock, {.forcePolling = true});
        ASSERT_TRUE(bus.watch(m_events.listener()));
    }
    plug("1-1");
    m_clock.advance(3 * kSecond);
    EXPECT_THAT(m_events.all(), IsEmpty());
}

} // namespace

} // namespace vornadel::test
