#include "standins/virtual_hub/VirtualHub.h"

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
using testing::IsEmpty;

class VirtualHubTest : public testing::Test
{
protected:
    void plugIn(SimulatedLatency latency = SimulatedLatency::None)
    {
        std::string error;
        m_sim = hubInMemory(m_clock, latency);
        m_hub = std::make_unique<VirtualHub>(1, m_sim, m_host, [this](const std::string& problem) {
            const std::lock_guard lock(m_mutex);
            m_complaints.push_back(problem);
        });
        ASSERT_TRUE(m_hub->start(error)) << error;
    }
    void TearDown() override { m_hub.reset(); }

    /// Sends the request to the half that is on the bus now.
    std::uint32_t restartIntoRom()
    {
        ControlRequest request = {0x40, 0x00, 0, 0};
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

TEST_F(VirtualHubTest, LeavesWithBothHalvesAndComesBackAtARestart)
{
    plugIn(SimulatedLatency::Real);
    told();
    EXPECT_EQ(restartIntoRom(), 0U);
    EXPECT_THAT(told(), ElementsAre("begin super", "begin high", "finish super", "finish high"));
    m_clock.advance(699ms);
    EXPECT_THAT(told(), IsEmpty());
    m_clock.advance(1ms);
    EXPECT_THAT(told(), ElementsAre("attach super", "attach high"));
    EXPECT_EQ(m_sim->runningCode(), HubCode::Rom);
    EXPECT_EQ(m_host.device(HubSpeed::SuperSpeed).place, "sim-1");
}

TEST_F(VirtualHubTest, IsSeenToLeaveEvenWhenItIsBackAtOnce)
{
    plugIn();
    told();
    restartIntoRom();
    EXPECT_THAT(told(), ElementsAre("begin super", "begin high", "finish super", "finish high",
                                    "attach super", "attach high"));
}

TEST_F(VirtualHubTest, AnswersNobodyOfAnEarlierStay)
{
    plugIn();
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

TEST_F(VirtualHubTest, ComplainsWhenItCannotComeBack)
{
    plugIn();
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

} // namespace
} // namespace vornadel::test
