#include "tests/macos/MacTest.h"
#include "tests/support/UsbBusContract.h"

#include <cstdint>
#include <cstring>

namespace vornadel::test
{
namespace
{

constexpr std::uint8_t kRead = 0x11;
constexpr std::uint8_t kWrite = 0x12;
constexpr std::uint8_t kStall = 0x13;

/// A device that sends a pattern, stores what it receives, and stalls all other requests.
class MacBusUnderTest final : public BusUnderTest
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

    ControlRequest readRequest(std::span<std::uint8_t> in) override
    {
        return {.bmRequestType = 0xC0, .bRequest = kRead, .in = in};
    }
    std::vector<std::uint8_t> expectedRead(std::size_t length) override
    {
        std::vector<std::uint8_t> bytes(length);
        fill(bytes.data(), bytes.size());
        return bytes;
    }
    ControlRequest writeRequest(std::span<const std::uint8_t> out) override
    {
        return {.bmRequestType = 0x40, .bRequest = kWrite, .out = out};
    }
    std::vector<std::uint8_t> lastWritten() override { return m_written; }
    ControlRequest stalledRequest() override { return {0x40, kStall, 0, 0}; }

private:
    static void fill(std::uint8_t* bytes, std::size_t size)
    {
        for (std::size_t i = 0; i < size; ++i) {
            bytes[i] = static_cast<std::uint8_t>(i * 31 + 5);
        }
    }

    IOReturn answer(IOUSBDevRequest& transfer)
    {
        auto* const data = static_cast<std::uint8_t*>(transfer.pData);
        switch (transfer.bRequest) {
        case kRead:
            fill(data, transfer.wLength);
            break;
        case kWrite:
            m_written.assign(data, data + transfer.wLength);
            break;
        default:
            return static_cast<IOReturn>(0xE000404F);
        }
        transfer.wLenDone = transfer.wLength;
        return kIOReturnSuccess;
    }

    FakeMacos m_mac;
    IokitBus m_bus;
    std::vector<std::uint8_t> m_written;
};

INSTANTIATE_TEST_SUITE_P(Iokit, UsbBusContract,
                         testing::Values(BusFactory{
                             "Iokit", [] { return std::make_unique<MacBusUnderTest>(); }}),
                         busName);

} // namespace
} // namespace vornadel::test
