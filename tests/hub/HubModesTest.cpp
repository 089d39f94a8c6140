#include "tests/hub/BenchHub.h"

#include <chrono>

namespace vornadel::test
{
namespace
{

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

using SwitchMode = HubCommands;
using OpenRomDevice = HubCommands;

TEST_F(SwitchMode, ReopensAfterTheHubReturns)
{
    open();
    m_status[13] = 1; // quick, which counts only on the way into ROM code
    comesBackAt(3);
    EXPECT_TRUE(Hub_SwitchMode(HUB_MODE_FLASH));
    EXPECT_TRUE(Hub_IsOpen());
    EXPECT_EQ(m_clock.pauses(), times(3, 2s));
    EXPECT_THAT(m_bus.requests(), ElementsAre(kRestartIntoFlash, kOpenTime));
    EXPECT_THAT(m_bus.events(),
                ElementsAre("close 0", "drop 0", "search", "search", "search", "open 0"));
}

TEST_F(SwitchMode, ReadsTheStatusBlockOnlyOnTheWayIntoRomCode)
{
    open();
    EXPECT_TRUE(Hub_SwitchMode(HUB_MODE_ROM));
    EXPECT_THAT(m_bus.requests(), ElementsAre(kReadStatus, kRestartIntoRom, kOpenTime));
    EXPECT_EQ(m_clock.pauses(), times(1, 2s));
}

TEST_F(SwitchMode, WaitsASecondForAQuickHubOnTheWayIntoRomCode)
{
    open();
    m_status[13] = 1;
    comesBackAt(2);
    EXPECT_TRUE(Hub_SwitchMode(HUB_MODE_ROM));
    EXPECT_EQ(m_clock.pauses(), times(2, 1s));
}

TEST_F(SwitchMode, TakesOnlySpeedByteOneForQuick)
{
    open();
    m_status[13] = 0x81;
    EXPECT_TRUE(Hub_SwitchMode(HUB_MODE_ROM));
    EXPECT_EQ(m_clock.pauses(), times(1, 2s));
}

TEST_F(SwitchMode, DoesNotTrustTheSpeedByteOfAFailedRead)
{
    open();
    m_status[13] = 1;
    m_readResults = {kStalled};
    EXPECT_TRUE(Hub_SwitchMode(HUB_MODE_ROM));
    EXPECT_EQ(m_clock.pauses(), times(1, 2s));
}

TEST_F(SwitchMode, GivesUpAfterTwentyOpensTwoSecondsApart)
{
    open();
    comesBackAt(21);
    EXPECT_FALSE(Hub_SwitchMode(HUB_MODE_FLASH));
    EXPECT_FALSE(Hub_IsOpen());
    EXPECT_EQ(m_clock.pauses(), times(20, 2s));
    EXPECT_EQ(LastError, 5);
    EXPECT_EQ(m_clock.now(), 40s);
}

TEST_F(SwitchMode, StillTakesAHubThatIsBackForTheTwentiethOpen)
{
    open();
    comesBackAt(20);
    EXPECT_TRUE(Hub_SwitchMode(HUB_MODE_FLASH));
    EXPECT_EQ(m_clock.pauses(), times(20, 2s));
}

TEST_F(SwitchMode, DoesNotReachTheHubWithItsSecondAndThirdAttempt)
{
    open();
    m_commandResults = {kStalled, 0, 0};
    EXPECT_FALSE(Hub_SwitchMode(HUB_MODE_FLASH));
    EXPECT_FALSE(Hub_IsOpen());
    EXPECT_THAT(m_bus.requests(), ElementsAre(kRestartIntoFlash));
    EXPECT_THAT(m_bus.events(), ElementsAre("close 0", "drop 0"));
    EXPECT_EQ(m_clock.pauses(), times(3, 128ms));
}

TEST_F(SwitchMode, EndsWhenTheProgramDoes)
{
    open();
    m_clock.onSleep = [this, sleeps = 0](Clock::Duration) mutable {
        if (++sleeps == 2) {
            Hub_Abandon();
            m_clock.interrupt();
        }
    };
    m_bus.attached.clear();
    EXPECT_FALSE(Hub_SwitchMode(HUB_MODE_FLASH));
    EXPECT_EQ(m_clock.now(), 4s);
    EXPECT_EQ(LastError, 5);
}

TEST_F(OpenRomDevice, UsesAHubInRomCodeAsItIs)
{
    runRomCode();
    EXPECT_TRUE(Hub_OpenRomDevice());
    EXPECT_TRUE(Hub_IsOpen());
    EXPECT_THAT(m_bus.requests(), ElementsAre(kOpenTime, kReadStatus));
    EXPECT_THAT(m_clock.pauses(), IsEmpty());
}

TEST_F(OpenRomDevice, RestartsAHubThatRunsItsFirmware)
{
    EXPECT_TRUE(Hub_OpenRomDevice());
    EXPECT_TRUE(Hub_IsOpen());
    EXPECT_THAT(m_bus.requests(), ElementsAre(kOpenTime, kReadStatus, kReadStatus, kRestartIntoRom,
                                              kOpenTime, kReadStatus));
    EXPECT_EQ(m_clock.pauses(), times(1, 2s));
    EXPECT_EQ(LastError, 0);
}

TEST_F(OpenRomDevice, SetsCodeTwelveWhenTheHubStaysOutOfRomCode)
{
    m_restartEndsInRom = false;
    EXPECT_FALSE(Hub_OpenRomDevice());
    EXPECT_EQ(LastError, 12);
    EXPECT_FALSE(Hub_IsOpen());
    EXPECT_THAT(m_bus.requests(), ElementsAre(kOpenTime, kReadStatus, kReadStatus, kRestartIntoRom,
                                              kOpenTime, kReadStatus));
}

} // namespace
} // namespace vornadel::test
