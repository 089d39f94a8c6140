#include "platform/linux/LibusbBus.h"
#include "tests/platform/UsbTestbed.h"
#include "tests/support/UsbBusContract.h"
#include "tests/support/VirtualClock.h"

#include <cerrno>
#include <mutex>

namespace vornadel::test
{

namespace
{

constexpr std::uint8_t kRead = 0x21;
constexpr std::uint8_t kWrite = 0x22;
constexpr std::uint8_t kStall = 0x23;

/// libusb with a simulated device that answers reads with a pattern and stores writes.
class LibusbUnderTest final : public BusUnderTest
{
public:
    explicit LibusbUnderTest(bool polling) : m_bus(m_clock, {.forcePolling = polling})
    {
        m_testbed.plug("1-2", 0xBEAD, 0x0001); // an unrelated neighbour
    }

    UsbBus& bus() override { return m_bus; }

    void plug(std::uint16_t vendorId, std::uint16_t productId) override
    {
        m_testbed.plug("1-1", vendorId, productId,
                       [this](const WireRequest& request) { return answer(request); });
    }

    void unplug() override { m_testbed.unplug("1-1"); }

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

    void deliverEvents() override { m_clock.advance(std::chrono::seconds(1)); }

private:
    WireAnswer answer(const WireRequest& request)
    {
        if (request.bRequest == kRead) {
            return {.in = expectedRead(request.wLength)};
        }
        if (request.bRequest == kWrite) {
            const std::lock_guard lock(m_mutex);
            m_written = request.out;
            return {};
        }
        return {.error = -EPIPE};
    }

    UsbTestbed m_testbed;
    VirtualClock m_clock;
    LibusbBus m_bus;
    std::mutex m_mutex;
    std::vector<std::uint8_t> m_written;
};

INSTANTIATE_TEST_SUITE_P(
    Libusb, UsbBusContract,
    testing::Values(BusFactory{"Hotplug", [] { return std::make_unique<LibusbUnderTest>(false); }},
                    BusFactory{"Polling", [] { return std::make_unique<LibusbUnderTest>(true); }}),
    busName);

} // namespace

} // namespace vornadel::test
