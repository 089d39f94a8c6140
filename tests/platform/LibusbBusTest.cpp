#include "platform/linux/LibusbBus.h"
#include "platform/linux/LibusbDevice.h"
#include "tests/platform/UsbTestbed.h"
#include "tests/support/UsbDevices.h"
#include "tests/support/VirtualClock.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <libusb.h>
#include <string>
#include <sys/resource.h>
#include <utility>
#include <vector>

namespace vornadel::test
{

namespace
{

constexpr std::uint32_t kTimedOut = 0xFFFFFFF9;
constexpr std::uint32_t kNoDevice = 0xFFFFFFFC;

class LibusbBusTest : public testing::Test
{
protected:
    /// A plugged and open device whose `handler` answers; null if it did not open.
    std::unique_ptr<UsbDevice> openDevice(WireHandler handler = {})
    {
        m_node = &m_testbed.plug("1-1", kVendorId, kProductId, std::move(handler));
        std::unique_ptr<UsbDevice> device = find();
        return device && device->open() == UsbOpenStatus::Opened ? std::move(device) : nullptr;
    }

    std::unique_ptr<UsbDevice> find() { return findDevice(m_bus, kVendorId, kProductId); }

    UsbTestbed m_testbed;
    VirtualClock m_clock;
    LibusbBus m_bus{m_clock, {.controlTimeout = std::chrono::milliseconds(50)}};
    SimulatedNode* m_node = nullptr;
};

std::vector<std::uint8_t> pattern(std::size_t length)
{
    std::vector<std::uint8_t> data(length);
    for (std::size_t i = 0; i < length; ++i) {
        data[i] = static_cast<std::uint8_t>(i * 3 + 1);
    }
    return data;
}

TEST_F(LibusbBusTest, ListsIdsInTheOrderOfLibusbWithoutOpening)
{
    std::vector<SimulatedNode*> nodes;
    for (const unsigned product : {4U, 1U, 3U, 2U}) {
        nodes.push_back(&m_testbed.plug("1-" + std::to_string(product), kVendorId,
                                        static_cast<std::uint16_t>(product)));
    }
    using Ids = std::vector<std::pair<unsigned, unsigned>>;
    Ids listed;
    for (const auto& device : allDevices(m_bus)) {
        listed.emplace_back(device->vendorId(), device->productId());
    }

    libusb_context* context = nullptr;
    ASSERT_EQ(libusb_init(&context), 0);
    libusb_device** list = nullptr;
    const ssize_t count = libusb_get_device_list(context, &list);
    Ids expected;
    for (ssize_t i = 0; i < count; ++i) {
        libusb_device_descriptor descriptor{};
        libusb_get_device_descriptor(list[i], &descriptor);
        expected.emplace_back(descriptor.idVendor, descriptor.idProduct);
    }
    libusb_free_device_list(list, 1);
    libusb_exit(context);

    EXPECT_EQ(listed.size(), 4U);
    EXPECT_EQ(listed, expected);
    for (SimulatedNode* const node : nodes) {
        EXPECT_EQ(node->ioctlCount(), 0U);
    }
}

TEST_F(LibusbBusTest, GivesNoListWhileLibusbCannotStartAndTriesAgain)
{
    m_testbed.plug("1-1", kVendorId, kProductId);
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit none{0, before.rlim_max}; // no more files for this process
    setrlimit(RLIMIT_NOFILE, &none);
    EXPECT_EQ(m_bus.search(), nullptr);
    EXPECT_FALSE(m_bus.watch([](UsbEvent) {}));
    setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_NE(find(), nullptr);
}

TEST_F(LibusbBusTest, DevicesAndSearchesOutliveTheBus)
{
    m_testbed.plug("1-1", kVendorId, kProductId);
    auto bus = std::make_unique<LibusbBus>(m_clock);
    auto device = findDevice(*bus, kVendorId, kProductId);
    const auto search = bus->search();
    bus.reset();
    ASSERT_NE(device, nullptr);
    EXPECT_EQ(device->open(), UsbOpenStatus::Opened);
    ControlRequest request{.bmRequestType = 0x40};
    EXPECT_EQ(device->control(request), 0U);
    EXPECT_EQ(search->next(device), UsbSearch::Step::Device);
}

TEST_F(LibusbBusTest, FailedOpensLeaveNothingBehind)
{
    m_testbed.plug("1-1", kVendorId, kProductId);
    const auto gone = find();
    m_testbed.unplug("1-1");
    for (int i = 0; i < 200; ++i) {
        EXPECT_EQ(gone->open(), UsbOpenStatus::Gone);
    }
    EXPECT_NE(openDevice(), nullptr);
}

TEST_F(LibusbBusTest, PutsEveryFieldOfTheSetupPacketOnTheWire)
{
    const auto device = openDevice();
    ASSERT_NE(device, nullptr);
    const std::vector<std::uint8_t> data = pattern(32);
    ControlRequest request{0x40, 0xC8, 0xFE01, 0x0203, data};
    EXPECT_EQ(device->control(request), 0U);
    EXPECT_EQ(m_node->requests(), (std::vector<WireRequest>{{.bmRequestType = 0x40,
                                                             .bRequest = 0xC8,
                                                             .wValue = 0xFE01,
                                                             .wIndex = 0x0203,
                                                             .wLength = 32,
                                                             .out = data}}));
    device->close();
    EXPECT_THAT(m_node->refusedIoctls(), testing::IsEmpty())
        << "no interface is claimed, no driver detached";
}

TEST_F(LibusbBusTest, SendsNothingWhileClosed)
{
    const auto device = openDevice();
    ASSERT_NE(device, nullptr);
    device->close();
    ControlRequest request{.bmRequestType = 0x40, .transferred = 77};
    EXPECT_EQ(device->control(request), kNoDevice);
    EXPECT_EQ(device->failureOf(kNoDevice), UsbFailure::Gone);
    EXPECT_EQ(request.transferred, 0U);
    EXPECT_THAT(m_node->requests(), testing::IsEmpty());
}

TEST_F(LibusbBusTest, TakesAShortTransferAsAFailure)
{
    const auto device =
        openDevice([](const WireRequest&) { return WireAnswer{.in = pattern(31), .refused = 1}; });
    ASSERT_NE(device, nullptr);
    std::array<std::uint8_t, 32> data{};
    ControlRequest write{.bmRequestType = 0x40, .out = data};
    EXPECT_EQ(device->control(write), LibusbDevice::kShortTransfer);
    EXPECT_EQ(write.transferred, 31U);
    ControlRequest read{.bmRequestType = 0xC0, .in = data};
    EXPECT_EQ(device->control(read), LibusbDevice::kShortTransfer);
    EXPECT_EQ(device->failureOf(LibusbDevice::kShortTransfer), UsbFailure::Short);
    EXPECT_EQ(read.transferred, 31U);
    EXPECT_EQ(data[30], pattern(31)[30]);
}

TEST_F(LibusbBusTest, TellsAStallFromOtherFailures)
{
    const auto device = openDevice([](const WireRequest& request) {
        return WireAnswer{.error = request.bRequest == 1 ? -EPIPE : -EPROTO};
    });
    ASSERT_NE(device, nullptr);
    ControlRequest stalled{.bmRequestType = 0x40, .bRequest = 1};
    EXPECT_EQ(device->failureOf(device->control(stalled)), UsbFailure::Stalled);
    ControlRequest other{.bmRequestType = 0x40, .bRequest = 2};
    EXPECT_EQ(device->failureOf(device->control(other)), UsbFailure::Other);
}

TEST_F(LibusbBusTest, EndsATransferThatIsNotAnsweredAndGoesOn)
{
    const auto device = openDevice(
        [](const WireRequest& request) { return WireAnswer{.never = request.bRequest == 1}; });
    ASSERT_NE(device, nullptr);
    ControlRequest unanswered{.bmRequestType = 0x40, .bRequest = 1};
    EXPECT_EQ(LibusbBus::Options{}.controlTimeout, std::chrono::seconds(30));
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(device->control(unanswered), kTimedOut);
    EXPECT_EQ(device->failureOf(kTimedOut), UsbFailure::TimedOut);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(50));
    unanswered.limit = std::chrono::milliseconds(100);
    EXPECT_EQ(device->control(unanswered), kTimedOut);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(150));
    ControlRequest answered{.bmRequestType = 0x40, .bRequest = 2};
    EXPECT_EQ(device->control(answered), 0U);
}

} // namespace

} // namespace vornadel::test
