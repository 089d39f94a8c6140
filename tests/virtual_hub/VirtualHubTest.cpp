#include "standins/virtual_hub/VirtualHub.h"

#include "tests/support/VirtualClock.h"
#include "tests/virtual_hub/RecordingHost.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace vornadel::test
{
namespace
{

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class VirtualHubTest : public testing::Test
{
protected:
    void plugIn(const std::string& options)
    {
        std::string error;
        m_sim = hubInMemory(options, m_clock);
        ASSERT_NE(m_sim, nullptr);
        m_hub = std::make_unique<VirtualHub>(1, m_sim, m_host, [this](const std::string& problem) {
            const std::lock_guard lock(m_mutex);
            m_complaints.push_back(problem);
        });
        ASSERT_TRUE(m_hub->start(error)) << error;
    }
    void TearDown() override { m_hub.reset(); }

    /// A request from the host to the half that is on the bus now.
    std::uint32_t send(std::uint8_t bRequest, std::uint16_t wValue = 0)
    {
        ControlRequest request = {0x40, bRequest, wValue, 0};
        return m_host.device(HubSpeed::SuperSpeed).vendorRequest(request);
    }
    std::vector<std::string> told()
    {
        m_hub->waitUntilShown();
        return m_host.told();
    }

    VirtualClock m_clock;
    RecordingHost m_host;
    std::shared_ptr<SimulatedHub> m_sim;
    std::mutex m_mutex;
    std::vector<std::string> m_complaints;
    std::unique_ptr<VirtualHub> m_hub;
};

TEST_F(VirtualHubTest, GoesOntoTheBusSuperSpeedFirst)
{
    plugIn("latency=none");
    EXPECT_THAT(told(), ElementsAre("attach super", "attach high"));
    EXPECT_EQ(m_host.device(HubSpeed::SuperSpeed).productId, 0x0001);
    EXPECT_EQ(m_host.device(HubSpeed::HighSpeed).productId, 0x0002);
    EXPECT_EQ(m_host.device(HubSpeed::SuperSpeed).otherProductId, 0x0002);
    EXPECT_EQ(m_host.device(HubSpeed::HighSpeed).otherProductId, 0x0001);
    EXPECT_EQ(m_host.device(HubSpeed::HighSpeed).vendorId, 0x1209);
}

TEST_F(VirtualHubTest, LeavesWithBothHalvesAndComesBackAtARestart)
{
    plugIn("latency=real");
    told();
    EXPECT_EQ(send(0x00), 0U);
    EXPECT_THAT(told(), ElementsAre("begin super", "begin high", "finish super", "finish high"));
    m_clock.advance(699ms);
    EXPECT_THAT(told(), IsEmpty());
    m_clock.advance(1ms);
    EXPECT_THAT(told(), ElementsAre("attach super", "attach high"));
    EXPECT_EQ(m_sim->runningCode(), HubCode::Rom);
}

TEST_F(VirtualHubTest, IsSeenToLeaveEvenWhenItIsBackAtOnce)
{
    plugIn("latency=none");
    told();
    send(0x00);
    EXPECT_THAT(told(), ElementsAre("begin super", "begin high", "finish super", "finish high",
                                    "attach super", "attach high"));
}

TEST_F(VirtualHubTest, AnswersNobodyOfAnEarlierStay)
{
    plugIn("latency=none");
    const VirtualDevice before = m_host.device(HubSpeed::SuperSpeed);
    EXPECT_TRUE(before.present());
    m_sim->unplug();
    m_sim->replug();
    told();
    EXPECT_FALSE(before.present());
    ControlRequest openTime = {0x40, 0x02, 1, 0x1209};
    EXPECT_EQ(before.vendorRequest(openTime), kSimulatedNoDevice);
    EXPECT_EQ(m_host.device(HubSpeed::SuperSpeed).vendorRequest(openTime), 0U);
}

TEST_F(VirtualHubTest, RefusesRequestsOnlyWhileAnotherProgramHasItsFlash)
{
    plugIn("latency=none");
    // As if it had come back while the file was locked.
    m_sim->close(m_sim->attachedHalves().front());
    m_sim->addFault({.kind = FaultKind::OpenRefused, .amount = 1});
    ControlRequest openTime = {0x40, 0x02, 1, 0x1209};
    const VirtualDevice device = m_host.device(HubSpeed::SuperSpeed);
    EXPECT_EQ(device.vendorRequest(openTime), kSimulatedStall);
    EXPECT_EQ(device.vendorRequest(openTime), 0U);
    EXPECT_EQ(device.vendorRequest(openTime), 0U);
    EXPECT_TRUE(device.present());
}

TEST_F(VirtualHubTest, ComplainsWhenItCannotComeBack)
{
    plugIn("latency=none");
    told();
    m_sim->unplug();
    told();
    m_host.refuse("no free port");
    m_sim->replug();
    EXPECT_THAT(told(), IsEmpty());
    const std::lock_guard lock(m_mutex);
    ASSERT_FALSE(m_complaints.empty());
    EXPECT_EQ(m_complaints.front(), "no free port");
}

TEST_F(VirtualHubTest, DoesNotStartWithTheFlashOfAnotherHub)
{
    plugIn("latency=none");
    const std::vector<AttachedHalf> ports = m_sim->attachedHalves();
    VirtualHub second(2, m_sim, m_host, [](const std::string&) {});
    std::string error;
    EXPECT_FALSE(second.start(error)); // its hub is already open, like a locked file
    EXPECT_THAT(error, HasSubstr("in use by another hub or program"));
}

} // namespace
} // namespace vornadel::test
