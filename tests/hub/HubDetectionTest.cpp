#include "hub/HubDetection.h"
#include "tests/hub/BenchHub.h"

namespace vornadel::test
{
namespace
{

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Detection = HubCommands;

TEST_F(Detection, ReadsTheVersionOfTheHub)
{
    m_status[10] = 0x01;
    m_status[11] = 0x05;
    const HubDetection detection = Hub_Detect();
    EXPECT_TRUE(detection.found);
    EXPECT_EQ(detection.version, 0x0105);
    EXPECT_THAT(m_bus.events(), ElementsAre("search", "drop 0", "end of list", "search", "open 0",
                                            "close 0", "drop 0"));
    EXPECT_THAT(m_bus.requests(), ElementsAre(kOpenTime, kReadStatus));
}

TEST_F(Detection, OpensNothingWithoutASupportedHub)
{
    m_bus.attached = {{0x2222, 0x0001}};
    EXPECT_FALSE(Hub_Detect().found);
    EXPECT_THAT(m_bus.events(), ElementsAre("search", "drop 0", "end of list"));
    EXPECT_EQ(LastError, 0);
}

TEST_F(Detection, KeepsTheVersionAtAllOnesForAHubThatRefuses)
{
    m_bus.attached = {{kVendor, kSuperSpeed, UsbOpenStatus::NoAccess}};
    const HubDetection detection = Hub_Detect();
    EXPECT_TRUE(detection.found);
    EXPECT_EQ(detection.version, 0xFFFF);
    EXPECT_FALSE(Hub_IsOpen());
    EXPECT_THAT(m_bus.requests(), IsEmpty());
}

TEST_F(Detection, LeavesTheHubOfAFlowAlone)
{
    open();
    onAnotherThread([] {
        const HubDetection detection = Hub_Detect();
        EXPECT_TRUE(detection.found);
        EXPECT_EQ(detection.version, 0xFFFF);
    });
    EXPECT_TRUE(Hub_IsOpen());
    EXPECT_THAT(m_bus.events(), ElementsAre("search", "drop 0", "end of list"));
    EXPECT_THAT(m_bus.requests(), IsEmpty());
}

TEST_F(Detection, WaitsTwoSecondsForAHubThatAnswersNothing)
{
    std::vector<Clock::Duration> limits;
    m_bus.onControl([&](ControlRequest& request) {
        limits.emplace_back(request.limit);
        m_clock.sleep(request.limit);
        return kStalled;
    });
    EXPECT_EQ(Hub_Detect().version, 0);
    EXPECT_THAT(limits, ElementsAre(2s, 100ms)) << "open-time request and status";
    open();
    EXPECT_EQ(limits.back(), 0s) << "a flow's requests have the platform's own limit";
}

} // namespace
} // namespace vornadel::test
