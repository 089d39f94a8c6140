#include "standins/sim/DemoImage.h"
#include "tests/sim/HubBench.h"
#include "tests/support/UsbBusContract.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace vornadel::test
{
namespace
{

/// The simulated hub with ROM code running; the contract reads and writes its flash.
class SimulatedBusUnderTest final : public BusUnderTest
{
public:
    SimulatedBusUnderTest() { m_bench.hub().unplug(); }

    UsbBus& bus() override { return *m_bench.bus; }

    void plug(std::uint16_t vendorId, std::uint16_t productId) override
    {
        Bytes image = demoImage();
        image[0x7E02] = static_cast<std::uint8_t>(vendorId >> 8);
        image[0x7E03] = static_cast<std::uint8_t>(vendorId & 0xFF);
        image[0x7E04] = static_cast<std::uint8_t>(productId >> 8);
        image[0x7E05] = static_cast<std::uint8_t>(productId & 0xFF);
        EXPECT_TRUE(m_bench.hub().setFlash(image));
        m_bench.hub().replug(HubCode::Rom);
    }

    void unplug() override { m_bench.hub().unplug(); }

    ControlRequest readRequest(std::span<std::uint8_t> in) override
    {
        return {0xC0, 0xD8, 0x0200, 0, {}, in};
    }

    std::vector<std::uint8_t> expectedRead(std::size_t length) override
    {
        return flashAt(0x0200, length);
    }

    /// Writes to the erased part of the demo image, to a new piece of it each time.
    ControlRequest writeRequest(std::span<const std::uint8_t> out) override
    {
        m_written = m_free;
        m_writtenLength = out.size();
        m_free = static_cast<std::uint16_t>(m_free + out.size());
        return {0x40, 0xC8, m_written, 0, out};
    }

    std::vector<std::uint8_t> lastWritten() override { return flashAt(m_written, m_writtenLength); }

    ControlRequest stalledRequest() override { return {0x40, 0x7F, 0, 0}; }

private:
    Bytes flashAt(std::size_t address, std::size_t length)
    {
        const Bytes flash = m_bench.hub().flash();
        const auto begin = flash.begin() + static_cast<std::ptrdiff_t>(address);
        return {begin, begin + static_cast<std::ptrdiff_t>(length)};
    }

    HubBench m_bench;
    std::uint16_t m_free = 0x6000;
    std::uint16_t m_written = 0;
    std::size_t m_writtenLength = 0;
};

std::unique_ptr<BusUnderTest> makeBus() { return std::make_unique<SimulatedBusUnderTest>(); }

INSTANTIATE_TEST_SUITE_P(Simulated, UsbBusContract,
                         testing::Values(BusFactory{"Simulated", makeBus}), busName);

} // namespace
} // namespace vornadel::test
