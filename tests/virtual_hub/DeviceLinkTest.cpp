#include "standins/virtual_hub/DeviceLink.h"

#include "standins/virtual_hub/UrbExchange.h"
#include "tests/support/VirtualClock.h"
#include "tests/virtual_hub/Frames.h"
#include "tests/virtual_hub/Peer.h"
#include "tests/virtual_hub/SomeDevice.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <future>
#include <memory>
#include <sys/socket.h>

namespace vornadel::test
{
namespace
{

using namespace std::chrono_literals;
using testing::Each;

/// A SuperSpeed half at one end of a socket pair, the test at the other.
class DeviceLinkTest : public testing::Test
{
protected:
    std::unique_ptr<DeviceLink> link()
    {
        return std::make_unique<DeviceLink>(m_ends[1], std::make_unique<UrbExchange>(m_device),
                                            m_clock);
    }

    /// The device leaves; returns once the link has hung up.
    void leave()
    {
        const std::unique_ptr<DeviceLink> leaving = link();
        leaving->leave();
        leaving->join();
    }

private:
    static std::array<int, 2> socketPair()
    {
        std::array<int, 2> ends{};
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()), 0);
        return ends;
    }

    const std::array<int, 2> m_ends = socketPair();

protected:
    VirtualDevice m_device = someDevice(HubSpeed::SuperSpeed);
    VirtualClock m_clock;
    Peer m_peer{m_ends[0]};
};

TEST_F(DeviceLinkTest, CarriesOutNothingMoreOnceTheDeviceLeaves)
{
    std::promise<void> reached;
    std::promise<void> left;
    std::atomic<int> carriedOut = 0;
    m_device.vendorRequest = [&](ControlRequest&) { // the first one lasts until the device leaves
        if (++carriedOut == 1) {
            reached.set_value();
            left.get_future().wait();
        }
        return 0U;
    };
    Bytes many;
    Bytes answers = answer(1, 0, 0);
    for (std::uint32_t sequence = 1; sequence <= 50; ++sequence) {
        many = many + frame({sequence, 0, 0, 0, {0x40, 2, 0, 0, 0, 0, 0, 0}});
        answers = sequence == 1 ? answers : answers + answer(sequence, -108, 0);
    }
    m_peer.send(many);
    const std::unique_ptr<DeviceLink> leaving = link();
    reached.get_future().wait();
    leaving->leave();
    left.set_value();
    EXPECT_EQ(m_peer.receive(answers.size()), answers);
    EXPECT_TRUE(m_peer.hasEnded());
    EXPECT_EQ(carriedOut, 1);
}

TEST_F(DeviceLinkTest, HangsUpOnlyAfterASilence)
{
    int sleeps = 0;
    // Runs on the link's thread while it waits for the last messages.
    m_clock.onSleep = [&](Clock::Duration) {
        if (++sleeps <= 3) {
            m_peer.send(frame(statusRequest(static_cast<std::uint32_t>(sleeps))));
        }
    };
    leave();
    EXPECT_EQ(m_peer.receive(std::size_t{3} * 48),
              answer(1, -108, 0) + answer(2, -108, 0) + answer(3, -108, 0));
    EXPECT_TRUE(m_peer.hasEnded());
    EXPECT_EQ(sleeps, 4);
    EXPECT_THAT(m_clock.pauses(), Each(Clock::Duration(20ms)));
}

TEST_F(DeviceLinkTest, HangsUpOnWhoNeverFallsSilent)
{
    m_clock.onSleep = [&](Clock::Duration) { m_peer.send(frame(statusRequest(1))); };
    leave();
    EXPECT_LE(m_clock.now(), Clock::Duration(1s));
}

} // namespace
} // namespace vornadel::test
