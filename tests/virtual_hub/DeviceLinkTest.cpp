#include "standins/virtual_hub/DeviceLink.h"

#include "standins/virtual_hub/UrbExchange.h"
#include "tests/support/VirtualClock.h"
#include "tests/virtual_hub/Frames.h"
#include "tests/virtual_hub/HalfBench.h"
#include "tests/virtual_hub/Peer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <future>
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
    DeviceLinkTest() : DeviceLinkTest(pair()) {}

    VirtualClock m_clock;
    Peer m_peer;
    std::atomic<int> m_ended = 0;
    DeviceLink m_link;

private:
    static std::array<int, 2> pair()
    {
        std::array<int, 2> ends{};
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()), 0);
        return ends;
    }
    explicit DeviceLinkTest(std::array<int, 2> ends)
        : m_peer(ends[0]),
          m_link(ends[1], std::make_unique<UrbExchange>(someDevice(HubSpeed::SuperSpeed)), m_clock,
                 [this] { ++m_ended; })
    {
    }
};

TEST_F(DeviceLinkTest, AnswersManyAtOnceAndInPieces)
{
    Bytes many;
    Bytes answers;
    for (std::uint32_t sequence = 1; sequence <= 500; ++sequence) {
        many = many + frame({sequence, 1, 0, 1, {0x80, 8, 0, 0, 0, 0, 1, 0}});
        answers = answers + answer(sequence, 0, 1, {0});
    }
    m_peer.send({many.begin(), many.begin() + 1000});
    m_peer.send({many.begin() + 1000, many.begin() + 1001});
    m_peer.send({many.begin() + 1001, many.end()});
    EXPECT_EQ(m_peer.receive(answers.size()), answers);
}

TEST_F(DeviceLinkTest, AnswersWithAnErrorBeforeItHangsUp)
{
    m_peer.send(frame(statusRequest(1)));
    m_peer.send(frame({2, 1, 0, 1, {0x80, 8, 0, 0, 0, 0, 1, 0}}));
    EXPECT_EQ(m_peer.receive(49), answer(2, 0, 1, {0}));
    m_link.leave();
    EXPECT_EQ(m_peer.receive(48), answer(1, -108, 0));
    EXPECT_TRUE(m_peer.hasEnded());
    m_link.join();
    EXPECT_EQ(m_ended, 1);
}

TEST(DeviceLinkQueue, CarriesOutNothingMoreOnceTheDeviceLeaves)
{
    std::array<int, 2> ends{};
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()), 0);
    const Peer peer(ends[0]);
    VirtualClock clock;
    std::promise<void> reached;
    std::promise<void> left;
    std::atomic<int> carriedOut = 0;
    VirtualDevice device = someDevice(HubSpeed::SuperSpeed);
    device.vendorRequest = [&](ControlRequest&) { // the first one lasts until the device leaves
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
    peer.send(many);
    DeviceLink link(ends[1], std::make_unique<UrbExchange>(device), clock);
    reached.get_future().wait();
    link.leave();
    left.set_value();
    EXPECT_EQ(peer.receive(answers.size()), answers);
    EXPECT_TRUE(peer.hasEnded());
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
    m_link.leave();
    m_link.join();
    EXPECT_EQ(m_peer.receive(std::size_t{3} * 48),
              answer(1, -108, 0) + answer(2, -108, 0) + answer(3, -108, 0));
    EXPECT_TRUE(m_peer.hasEnded());
    EXPECT_EQ(sleeps, 4);
    EXPECT_THAT(m_clock.pauses(), Each(Clock::Duration(20ms)));
}

TEST_F(DeviceLinkTest, HangsUpOnWhoNeverFallsSilent)
{
    m_clock.onSleep = [&](Clock::Duration) { m_peer.send(frame(statusRequest(1))); };
    m_link.leave();
    m_link.join();
    EXPECT_LE(m_clock.now(), Clock::Duration(1s));
}

TEST_F(DeviceLinkTest, HangsUpOnWhoNeverListens)
{
    m_peer.sendUntilFull(frame({1, 1, 0, 18, {0x80, 6, 0, 1, 0, 0, 18, 0}}));
    m_link.leave();
    m_link.join();
    EXPECT_LE(m_clock.now(), Clock::Duration(1s));
}

} // namespace
} // namespace vornadel::test
