#pragma once

#include "platform/UsbBus.h"
#include "tests/support/PlugEvents.h"
#include "tests/support/UsbDevices.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <mutex>
#include <ostream>
#include <span>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace vornadel::test
{

/// What the contract needs from a back end: the bus, one device that can be plugged and unplugged,
/// and the requests that this device understands.
class BusUnderTest
{
public:
    BusUnderTest() = default;
    BusUnderTest(const BusUnderTest&) = delete;
    BusUnderTest& operator=(const BusUnderTest&) = delete;
    virtual ~BusUnderTest() = default;

    virtual UsbBus& bus() = 0;
    virtual void plug(std::uint16_t vendorId, std::uint16_t productId) = 0;
    virtual void unplug() = 0;

    /// A request whose answer fills `in`, and the answer. Called for 0, 32 and 4096 bytes.
    virtual ControlRequest readRequest(std::span<std::uint8_t> in) = 0;
    virtual std::vector<std::uint8_t> expectedRead(std::size_t length) = 0;

    /// A request that sends `out`, and the data stage that the device last received.
    virtual ControlRequest writeRequest(std::span<const std::uint8_t> out) = 0;
    virtual std::vector<std::uint8_t> lastWritten() = 0;

    /// A request without data stage that the device stalls.
    virtual ControlRequest stalledRequest() = 0;

    /// Delivers the plug events if something must drive them: a virtual clock, a run loop.
    virtual void deliverEvents() {}
    /// Whether events can arrive while this thread ends the watch.
    virtual bool reportsOnOtherThreads() { return true; }
};

/// A back end whose device answers reads with a pattern, stores writes and stalls all else.
class PatternBusUnderTest : public BusUnderTest
{
public:
    ControlRequest readRequest(std::span<std::uint8_t> in) override
    {
        return {.bmRequestType = 0xC0, .bRequest = kRead, .in = in};
    }
    std::vector<std::uint8_t> expectedRead(std::size_t length) override
    {
        std::vector<std::uint8_t> data(length);
        for (std::size_t i = 0; i < data.size(); ++i) {
            data[i] = static_cast<std::uint8_t>(i ^ (i >> 8));
        }
        return data;
    }
    ControlRequest writeRequest(std::span<const std::uint8_t> out) override
    {
        return {.bmRequestType = 0x40, .bRequest = kWrite, .out = out};
    }
    std::vector<std::uint8_t> lastWritten() override
    {
        const std::lock_guard lock(m_mutex);
        return m_written;
    }
    ControlRequest stalledRequest() override { return {.bmRequestType = 0x40, .bRequest = kStall}; }

protected:
    static constexpr std::uint8_t kRead = 0x21;
    static constexpr std::uint8_t kWrite = 0x22;
    static constexpr std::uint8_t kStall = 0x23;

    void store(std::vector<std::uint8_t> written)
    {
        const std::lock_guard lock(m_mutex);
        m_written = std::move(written);
    }

private:
    std::mutex m_mutex;
    std::vector<std::uint8_t> m_written;
};

struct BusFactory {
    std::string name; ///< letters and digits
    std::function<std::unique_ptr<BusUnderTest>()> make;
};

/// Otherwise gtest would print the bytes of the record, which differ from run to run.
inline void PrintTo(const BusFactory& factory, std::ostream* out) { *out << factory.name; }

/// The contract of every USB back end. A test program instantiates it once:
///
///     INSTANTIATE_TEST_SUITE_P(Embedded, UsbBusContract,
///                              testing::Values(BusFactory{"Embedded", makeBus}), busName);
class UsbBusContract : public testing::TestWithParam<BusFactory>
{
protected:
    static constexpr std::uint16_t kVendorId = 0x1209;
    static constexpr std::uint16_t kProductId = 0x5AB3;

    UsbBus& bus() { return m_subject->bus(); }
    void plug() { m_subject->plug(kVendorId, kProductId); }
    std::unique_ptr<UsbDevice> find() { return findDevice(bus(), kVendorId, kProductId); }

    bool watch(PlugEvents& events) { return bus().watch(events.listener()); }

    /// A plugged and open device; null on failure.
    std::unique_ptr<UsbDevice> openDevice()
    {
        plug();
        std::unique_ptr<UsbDevice> device = find();
        return device && device->open() == UsbOpenStatus::Opened ? std::move(device) : nullptr;
    }

    std::unique_ptr<BusUnderTest> m_subject = GetParam().make();
};

inline std::string busName(const testing::TestParamInfo<BusFactory>& info)
{
    return info.param.name;
}

TEST_P(UsbBusContract, ListsWhatIsAttachedAlsoWhileAnotherPartyHoldsIt)
{
    EXPECT_EQ(find(), nullptr);
    const auto holder = openDevice();
    ASSERT_NE(holder, nullptr);
    EXPECT_NE(find(), nullptr);
    m_subject->unplug();
    EXPECT_EQ(find(), nullptr);
}

TEST_P(UsbBusContract, WalksOnlyWhatWasThereWhenTheSearchBegan)
{
    const auto search = bus().search();
    ASSERT_NE(search, nullptr);
    plug();
    std::unique_ptr<UsbDevice> device;
    while (search->next(device) == UsbSearch::Step::Device) {
        EXPECT_FALSE(device->vendorId() == kVendorId && device->productId() == kProductId);
    }
    EXPECT_EQ(device, nullptr);
}

TEST_P(UsbBusContract, EndsTheWalkWhenTheListIsGivenBack)
{
    plug();
    const auto search = bus().search();
    ASSERT_NE(search, nullptr);
    std::unique_ptr<UsbDevice> device;
    ASSERT_EQ(search->next(device), UsbSearch::Step::Device);
    search->release();
    search->release();
    EXPECT_EQ(search->next(device), UsbSearch::Step::End);
    EXPECT_EQ(device, nullptr);
}

TEST_P(UsbBusContract, OpensForOneOwnerAtATime)
{
    const auto first = openDevice();
    auto second = find();
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(second->open(), UsbOpenStatus::Busy);
    first->close();
    first->close();
    EXPECT_EQ(second->open(), UsbOpenStatus::Opened);
    EXPECT_EQ(first->open(), UsbOpenStatus::Busy);
    second.reset();
    EXPECT_EQ(first->open(), UsbOpenStatus::Opened);
}

TEST_P(UsbBusContract, MovesDataFromTheDevice)
{
    const auto device = openDevice();
    ASSERT_NE(device, nullptr);
    for (const std::uint16_t length : {std::uint16_t{0}, std::uint16_t{32}, std::uint16_t{4096}}) {
        std::vector<std::uint8_t> data(length, 0xEE);
        ControlRequest request = m_subject->readRequest(data);
        EXPECT_EQ(device->control(request), 0U) << length;
        EXPECT_EQ(request.transferred, length);
        EXPECT_EQ(data, m_subject->expectedRead(length)) << length;
    }
}

TEST_P(UsbBusContract, MovesDataToTheDevice)
{
    const auto device = openDevice();
    ASSERT_NE(device, nullptr);
    for (const std::uint16_t length : {std::uint16_t{0}, std::uint16_t{32}, std::uint16_t{4096}}) {
        std::vector<std::uint8_t> data(length);
        for (std::size_t i = 0; i < data.size(); ++i) {
            data[i] = static_cast<std::uint8_t>(i * 7 + length);
        }
        ControlRequest request = m_subject->writeRequest(data);
        EXPECT_EQ(device->control(request), 0U) << length;
        EXPECT_EQ(request.transferred, length);
        EXPECT_EQ(m_subject->lastWritten(), data) << length;
    }
}

TEST_P(UsbBusContract, ReportsAStallAndGoesOn)
{
    const auto device = openDevice();
    ASSERT_NE(device, nullptr);
    ControlRequest stalled = m_subject->stalledRequest();
    EXPECT_NE(device->control(stalled), 0U);
    EXPECT_EQ(stalled.transferred, 0U);
    ControlRequest next = m_subject->readRequest({});
    EXPECT_EQ(device->control(next), 0U);
}

TEST_P(UsbBusContract, FailsRequestsToADeviceThatHasLeft)
{
    const auto device = openDevice();
    ASSERT_NE(device, nullptr);
    m_subject->unplug();
    ControlRequest request = m_subject->readRequest({});
    EXPECT_NE(device->control(request), 0U);
    device->close();
}

TEST_P(UsbBusContract, OpensNoDeviceThatHasLeft)
{
    plug();
    const auto device = find();
    ASSERT_NE(device, nullptr);
    m_subject->unplug();
    EXPECT_EQ(device->open(), UsbOpenStatus::Gone);
}

TEST_P(UsbBusContract, FailsOnTheOldDeviceWhenItHasReturned)
{
    const auto old = openDevice();
    ASSERT_NE(old, nullptr);
    m_subject->unplug();
    plug();
    const auto returned = find();
    ASSERT_NE(returned, nullptr);
    EXPECT_EQ(returned->open(), UsbOpenStatus::Opened);
    ControlRequest request = m_subject->readRequest({});
    EXPECT_NE(old->control(request), 0U);
    old->close();
    EXPECT_EQ(returned->control(request), 0U);
}

TEST_P(UsbBusContract, ReportsWhatComesAndGoes)
{
    PlugEvents events;
    ASSERT_TRUE(watch(events));
    plug();
    m_subject->deliverEvents();
    EXPECT_TRUE(events.waitFor(UsbEvent::Attached));
    const std::size_t arrivals = events.all().size();
    m_subject->unplug();
    m_subject->deliverEvents();
    EXPECT_TRUE(events.waitFor(UsbEvent::Detached, arrivals));
    bus().unwatch();
}

TEST_P(UsbBusContract, ReportsNothingThatWasThereBeforeTheWatch)
{
    plug();
    ASSERT_NE(find(), nullptr);
    PlugEvents events;
    ASSERT_TRUE(watch(events));
    m_subject->unplug();
    m_subject->deliverEvents();
    EXPECT_TRUE(events.waitFor(UsbEvent::Detached));
    bus().unwatch();
    EXPECT_EQ(events.all().front(), UsbEvent::Detached);
}

TEST_P(UsbBusContract, ReportsNothingAfterTheWatchUntilTheNext)
{
    PlugEvents events;
    ASSERT_TRUE(watch(events));
    bus().unwatch();
    bus().unwatch();
    plug();
    m_subject->deliverEvents();
    EXPECT_NE(find(), nullptr);
    m_subject->unplug();
    EXPECT_TRUE(events.all().empty());
    ASSERT_TRUE(watch(events));
    plug();
    m_subject->deliverEvents();
    EXPECT_TRUE(events.waitFor(UsbEvent::Attached));
    bus().unwatch();
}

TEST_P(UsbBusContract, EndsTheWatchOnlyWhenTheListenerHasEnded)
{
    if (!m_subject->reportsOnOtherThreads()) {
        return;
    }
    std::atomic<int> entered = 0;
    std::atomic<bool> leaving = false;
    std::atomic<bool> ended = false;
    ASSERT_TRUE(bus().watch([&](UsbEvent) {
        ++entered;
        entered.notify_all();
        leaving.wait(false);
        for (int i = 0; i < 10000; ++i) { // long enough to notice an end that does not wait
            std::this_thread::yield();
        }
        ended = true;
    }));
    std::thread world([this] {
        plug();
        m_subject->deliverEvents();
    });
    entered.wait(0);
    leaving = true;
    leaving.notify_all();
    bus().unwatch();
    EXPECT_TRUE(ended);
    const int calls = entered;
    world.join();
    EXPECT_EQ(entered, calls);
}

} // namespace vornadel::test
