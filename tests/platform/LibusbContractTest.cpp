#include "platform/linux/LibusbBus.h"
#include "tests/platform/UsbTestbed.h"
#include "tests/support/UsbBusContract.h"
#include "tests/support/VirtualClock.h"

#include <cerrno>

namespace vornadel::test
{

namespace
{

class LibusbUnderTest final : public PatternBusUnderTest
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

    void deliverEvents() override { m_clock.advance(std::chrono::seconds(1)); }

private:
    WireAnswer answer(const WireRequest& request)
    {
        if (request.bRequest == kRead) {
            return {.in = expectedRead(request.wLength)};
        }
        if (request.bRequest == kWrite) {
            store(request.out);
            return {};
        }
        return {.error = -EPIPE};
    }

    UsbTestbed m_testbed;
    VirtualClock m_clock;
    LibusbBus m_bus;
};

INSTANTIATE_TEST_SUITE_P(
    Libusb, UsbBusContract,
    testing::Values(BusFactory{"Hotplug", [] { return std::make_unique<LibusbUnderTest>(false); }},
                    BusFactory{"Polling", [] { return std::make_unique<LibusbUnderTest>(true); }}),
    busName);

} // namespace

} // namespace vornadel::test
