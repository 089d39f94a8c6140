#include "standins/sim/DemoImage.h"
#include "standins/virtual_hub/UrbExchange.h"
#include "standins/virtual_hub/VirtualHub.h"
#include "tests/support/VirtualClock.h"
#include "tests/virtual_hub/Frames.h"
#include "tests/virtual_hub/RecordingHost.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>

namespace vornadel::test
{
namespace
{

using testing::SizeIs;

/// A hub on a recording host, and the transfers of its SuperSpeed half.
class VendorRequests : public testing::Test
{
protected:
    void plugIn(const std::string& options)
    {
        std::string error;
        m_sim = hubInMemory(options, m_clock);
        ASSERT_NE(m_sim, nullptr);
        m_hub = std::make_unique<VirtualHub>(3, m_sim, m_host,
                                             [](const std::string& problem) { FAIL() << problem; });
        ASSERT_TRUE(m_hub->start(error)) << error;
        m_exchange = std::make_unique<UrbExchange>(m_host.device(HubSpeed::SuperSpeed));
    }
    void TearDown() override { m_hub.reset(); }

    Bytes tell(const Submit& submit)
    {
        Bytes out;
        std::size_t taken = 0;
        EXPECT_EQ(m_exchange->step(frame(submit), taken, out), Conversation::Step::Answered);
        return out;
    }
    Bytes write(std::uint32_t address, const Bytes& data)
    {
        const auto size = static_cast<std::uint32_t>(data.size());
        return tell({1, 0, 0, size, setup(0x40, 0xC8, address, size), data});
    }
    Bytes read(std::uint32_t address, std::uint32_t size)
    {
        return tell({2, 1, 0, size, setup(0xC0, 0xD8, address, size)});
    }
    static Bytes setup(std::uint8_t type, std::uint8_t request, std::uint32_t address,
                       std::uint32_t size)
    {
        const auto byte = [](std::uint32_t value) { return static_cast<std::uint8_t>(value); };
        return {type,
                request,
                byte(address),
                byte(address >> 8),
                byte(address >> 16),
                byte(address >> 24),
                byte(size),
                byte(size >> 8)};
    }

    VirtualClock m_clock;
    RecordingHost m_host;
    std::shared_ptr<SimulatedHub> m_sim;
    std::unique_ptr<VirtualHub> m_hub;
    std::unique_ptr<UrbExchange> m_exchange;
};

TEST_F(VendorRequests, EraseWriteAndReadTheFlash)
{
    plugIn("latency=none,mode=rom");
    EXPECT_EQ(tell({1, 0, 0, 0, setup(0x40, 0xE8, 0, 0)}), answer(1, 0, 0));
    EXPECT_EQ(m_sim->flash(), Bytes(32768, 0xFF));
    Bytes piece(4096);
    for (std::size_t at = 0; at < piece.size(); ++at) {
        piece[at] = static_cast<std::uint8_t>(at * 7);
    }
    EXPECT_EQ(write(0x1000, piece), answer(1, 0, 4096));
    EXPECT_EQ(read(0x1000, 4096), answer(2, 0, 4096, piece));
    EXPECT_EQ(read(0x3000, 256), answer(2, 0, 256, Bytes(256, 0xFF)));
}

TEST_F(VendorRequests, TellHowMuchATornWriteMoved)
{
    plugIn("latency=none,mode=rom,fault=torn:100");
    EXPECT_EQ(write(0, Bytes(256, 0)), answer(1, -32, 100));
}

TEST_F(VendorRequests, EndWithoutADeviceWhenTheHubVanishes)
{
    plugIn("latency=none,mode=rom,fault=vanish-before@read");
    EXPECT_EQ(read(0, 16), answer(2, -108, 0));
    m_hub->waitUntilShown();
    EXPECT_TRUE(m_host.attached().empty());
}

TEST_F(VendorRequests, RestartTheHubWithSuccess)
{
    plugIn("latency=none");
    EXPECT_EQ(tell({6, 0, 0, 0, setup(0x40, 0x00, 0, 0)}), answer(6, 0, 0));
    // That session has ended.
    EXPECT_EQ(tell({7, 1, 0, 32, {0xC0, 0x09, 0, 0, 0, 0, 32, 0}}), answer(7, -108, 0));
    m_hub->waitUntilShown();
    UrbExchange next(m_host.device(HubSpeed::SuperSpeed));
    Bytes out;
    std::size_t taken = 0;
    next.step(frame({8, 1, 0, 32, {0xC0, 0x09, 0, 0, 0, 0, 32, 0}}), taken, out);
    ASSERT_THAT(out, SizeIs(48 + 32));
    EXPECT_EQ(out[48 + 15], 0x00); // ROM code
}

} // namespace
} // namespace vornadel::test
