#include "tests/macos/MacTest.h"
#include "tests/support/UsbBusContract.h"

#include <algorithm>
#include <cstdint>

namespace vornadel::test
{
namespace
{

class MacBusUnderTest final : public PatternBusUnderTest
{
public:
    ~MacBusUnderTest() override { EXPECT_THAT(m_mac.misuse(), testing::IsEmpty()); }

    UsbBus& bus() override { return m_bus; }

    void plug(std::uint16_t vendorId, std::uint16_t productId) override
    {
        MacDevice device{.vendorId = vendorId, .productId = productId};
        device.onRequest = [this](IOUSBDevRequest& transfer) { return answer(transfer); };
        m_mac.plug(std::move(device));
    }
    void unplug() override { m_mac.unplug(); }
    void deliverEvents() override { m_mac.turnRunLoop(); }
    bool reportsOnOtherThreads() override { return false; } // only from its own run loop

private:
    IOReturn answer(IOUSBDevRequest& transfer)
    {
        auto* const data = static_cast<std::uint8_t*>(transfer.pData);
        switch (transfer.bRequest) {
        case kRead:
            std::ranges::copy(expectedRead(transfer.wLength), data);
            break;
        case kWrite:
            store({data, data + transfer.wLength});
            break;
        default:
            return static_cast<IOReturn>(0xE000404F);
        }
        transfer.wLenDone = transfer.wLength;
        return kIOReturnSuccess;
    }

    FakeMacos m_mac;
    IokitBus m_bus;
};

INSTANTIATE_TEST_SUITE_P(Iokit, UsbBusContract,
                         testing::Values(BusFactory{
                             "Iokit", [] { return std::make_unique<MacBusUnderTest>(); }}),
                         busName);

} // namespace
} // namespace vornadel::test
