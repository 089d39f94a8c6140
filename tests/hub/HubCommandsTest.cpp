#include "hub/HubCommands.h"
#include "tests/hub/HubTest.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <deque>
#include <initializer_list>
#include <numeric>

namespace vornadel::test
{
namespace
{

using namespace std::chrono_literals;
using ::testing::AllOf;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr std::uint32_t kStalled = 0xE000404F;

const SeenRequest kReadStatus{{0xC0, 0x09, 0x00, 0x00, 0x00, 0x00, 0x20, 0x00}};
const SeenRequest kRestartIntoRom{{0x40, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00}};
const SeenRequest kModeZero{{0x40, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00}};
const SeenRequest kRestartIntoFlash{{0x40, 0xE9, 0x01, 0x01, 0x00, 0x00, 0x00, 0x00}};
const SeenRequest kEraseFlash{{0x40, 0xE8, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00}};

// A hub whose answers are laid out beforehand: its status block, and the statuses of its next answers by request.
class HubCommands : public HubTest
{
protected:
    HubCommands()
    {
        runFlashCode();
        m_bus.onControl([this](ControlRequest& request) { return answer(request); });
    }

    void runRomCode() { m_status[15] = 0xFD; }
    void runFlashCode() { m_status[15] = 0x02; }

    /// The open hub has left the bus for all who search, and is back before the `attempt`-th open.
    void comesBackAt(int attempt)
    {
        m_bus.attached.clear();
        m_clock.onSleep = [this, attempt, sleeps = 0](Clock::Duration) mutable {
            if (++sleeps == attempt) {
                m_bus.attached = {{kVendor, kSuperSpeed}};
            }
        };
    }

    /// The statuses of the next answers to request 0x09, to restarts and erases; 0 when they run out.
    std::deque<std::uint32_t> m_readResults;
    std::deque<std::uint32_t> m_commandResults;
    std::array<std::uint8_t, 32> m_status{};
    bool m_restartEndsInRom = true;

private:
    static std::uint32_t nextOf(std::deque<std::uint32_t>& results)
    {
        if (results.empty()) {
            return 0;
        }
        const std::uint32_t result = results.front();
        results.pop_front();
        return result;
    }

    std::uint32_t answer(ControlRequest& request)
    {
        switch (request.bRequest) {
        case 0x02:
            return 0;
        case 0x09:
            std::memcpy(request.data, m_status.data(),
                        std::min<std::size_t>(request.wLength, m_status.size()));
            return nextOf(m_readResults);
        case 0xD8: {
            auto* data = static_cast<std::uint8_t*>(request.data);
            std::iota(data, data + request.wLength, std::uint8_t{1});
            return nextOf(m_commandResults);
        }
        case 0x00:
            if (m_restartEndsInRom) {
                runRomCode();
            }
            return nextOf(m_commandResults);
        default:
            return nextOf(m_commandResults);
        }
    }
};

class StatusBlock : public HubCommands
{
};
class SendModeCommand : public HubCommands
{
};
class SwitchMode : public HubCommands
{
};
class OpenRomDevice : public HubCommands
{
};
class EraseFlash : public HubCommands
{
};
class FlashTransfers : public HubCommands
{
};

std::vector<Clock::Duration> times(std::size_t count, Clock::Duration pause)
{
    return std::vector<Clock::Duration>(count, pause);
}

TEST_F(StatusBlock, IsReadWithOneRequestOfItsLength)
{
    open();
    m_status[7] = 0x77;
    HubStatusBlock block{};
    EXPECT_EQ(Hub_ReadStatusBlock(block.data(), 32), 0U);
    EXPECT_EQ(block, m_status);
    EXPECT_THAT(m_bus.requests(), ElementsAre(kReadStatus));
}

TEST_F(StatusBlock, GivesTheVersionHighByteFirst)
{
    open();
    m_status[10] = 0x12;
    m_status[11] = 0x34;
    EXPECT_EQ(Hub_GetFwVersion(), 0x1234);
    EXPECT_THAT(m_bus.requests(), ElementsAre(kReadStatus));
}

TEST_F(StatusBlock, GivesVersionZeroWhenItCannotBeRead)
{
    open();
    m_status[10] = 0x12;
    m_readResults = {kStalled};
    EXPECT_EQ(Hub_GetFwVersion(), 0);
    Hub_CloseDevice();
    EXPECT_EQ(Hub_GetFwVersion(), 0);
}

TEST_F(StatusBlock, TellsRomCodeByBitOneOfByteFifteenAlone)
{
    open();
    m_status.fill(0xFF);
    EXPECT_FALSE(Hub_IsRomMode());
    m_status[15] = 0xFD;
    EXPECT_TRUE(Hub_IsRomMode());
    m_status.fill(0);
    EXPECT_TRUE(Hub_IsRomMode());
    m_status[15] = 0x02;
    EXPECT_FALSE(Hub_IsRomMode());
}

TEST_F(StatusBlock, IsNoRomCodeWhenItCannotBeRead)
{
    open();
    runRomCode();
    m_readResults = {kStalled};
    EXPECT_FALSE(Hub_IsRomMode());
    Hub_CloseDevice();
    EXPECT_FALSE(Hub_IsRomMode());
}

TEST_F(SendModeCommand, SendsTheRequestOfEachModeAndCloses)
{
    const std::vector<std::pair<std::uint8_t, SeenRequest>> modes = {
        {HUB_MODE_ROM, kRestartIntoRom}, {HUB_MODE_FLASH, kRestartIntoFlash}, {0x00, kModeZero}};
    for (const auto& [mode, request] : modes) {
        open();
        EXPECT_TRUE(Hub_SendModeCommand(mode));
        EXPECT_FALSE(Hub_IsOpen());
        EXPECT_THAT(m_bus.requests(), ElementsAre(request)) << "mode " << +mode;
        EXPECT_THAT(m_bus.events(), ElementsAre("close 0", "drop 0"));
    }
}

TEST_F(SendModeCommand, HasTheModesNumberedAsTheHubNumbersThem)
{
    EXPECT_EQ(HUB_MODE_ROM, 0x21);
    EXPECT_EQ(HUB_MODE_FLASH, 0x22);
}

TEST_F(SendModeCommand, SendsNothingForAnUnlistedModeYetClosesAndSucceeds)
{
    for (const std::uint8_t mode : std::initializer_list<std::uint8_t>{0x01, 0x20, 0x23, 0xFF}) {
        open();
        EXPECT_TRUE(Hub_SendModeCommand(mode));
        EXPECT_THAT(m_bus.requests(), IsEmpty());
        EXPECT_THAT(m_bus.events(), ElementsAre("close 0", "drop 0"));
    }
}

TEST_F(SendModeCommand, ClosesAfterAFailureToo)
{
    open();
    m_commandResults = {kStalled};
    EXPECT_FALSE(Hub_SendModeCommand(HUB_MODE_FLASH));
    EXPECT_FALSE(Hub_IsOpen());
    EXPECT_FALSE(Hub_SendModeCommand(HUB_MODE_FLASH));
    EXPECT_TRUE(Hub_SendModeCommand(0x77));
    EXPECT_THAT(m_bus.requests(), ElementsAre(kRestartIntoFlash));
}

TEST_F(SwitchMode, ReopensAfterTheHubReturns)
{
    open();
    comesBackAt(3);
    EXPECT_TRUE(Hub_SwitchMode(HUB_MODE_FLASH));
    EXPECT_TRUE(Hub_IsOpen());
    EXPECT_EQ(m_clock.pauses(), times(3, 2s));
    EXPECT_THAT(m_bus.requests(), ElementsAre(kRestartIntoFlash, kGreeting));
    EXPECT_THAT(m_bus.events(), ElementsAre("close 0", "drop 0", "search", "search", "search", "open 0"));
}

TEST_F(SwitchMode, ReadsTheStatusBlockOnlyOnTheWayIntoRomCode)
{
    open();
    EXPECT_TRUE(Hub_SwitchMode(HUB_MODE_ROM));
    EXPECT_THAT(m_bus.requests(), ElementsAre(kReadStatus, kRestartIntoRom, kGreeting));
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

TEST_F(SwitchMode, WaitsTwoSecondsForAQuickHubOnTheWayIntoFlashCode)
{
    open();
    m_status[13] = 1;
    EXPECT_TRUE(Hub_SwitchMode(HUB_MODE_FLASH));
    EXPECT_EQ(m_clock.pauses(), times(1, 2s));
    EXPECT_THAT(m_bus.requests(), ElementsAre(kRestartIntoFlash, kGreeting));
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

TEST_F(SwitchMode, GivesUpAfterTwentyOpensASecondApart)
{
    open();
    m_status[13] = 1;
    comesBackAt(21);
    EXPECT_FALSE(Hub_SwitchMode(HUB_MODE_ROM));
    EXPECT_EQ(m_clock.pauses(), times(20, 1s));
    EXPECT_EQ(m_clock.now(), 20s);
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

TEST_F(SwitchMode, TriesAgainWhenAReopenMeetsABusyHub)
{
    open();
    m_bus.attached = {{kVendor, kSuperSpeed, false}};
    m_clock.onSleep = [this, sleeps = 0](Clock::Duration) mutable {
        m_bus.attached[0].opens = ++sleeps == 2;
    };
    EXPECT_TRUE(Hub_SwitchMode(HUB_MODE_FLASH));
    EXPECT_EQ(m_clock.pauses(), times(2, 2s));
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
    EXPECT_THAT(m_bus.requests(), ElementsAre(kGreeting, kReadStatus));
    EXPECT_THAT(m_clock.pauses(), IsEmpty());
}

TEST_F(OpenRomDevice, RestartsAHubThatRunsItsFirmware)
{
    EXPECT_TRUE(Hub_OpenRomDevice());
    EXPECT_TRUE(Hub_IsOpen());
    EXPECT_THAT(m_bus.requests(),
                ElementsAre(kGreeting, kReadStatus, kReadStatus, kRestartIntoRom, kGreeting, kReadStatus));
    EXPECT_EQ(m_clock.pauses(), times(1, 2s));
    EXPECT_EQ(LastError, 0);
}

TEST_F(OpenRomDevice, FailsWithTheTransportsCodeWithoutAHub)
{
    m_bus.givesList = false;
    EXPECT_FALSE(Hub_OpenRomDevice());
    EXPECT_EQ(LastError, 2);
    m_bus.givesList = true;
    m_bus.attached.clear();
    EXPECT_FALSE(Hub_OpenRomDevice());
    EXPECT_EQ(LastError, 5);
    EXPECT_THAT(m_bus.requests(), IsEmpty());
}

TEST_F(OpenRomDevice, SetsCodeTwelveWhenTheHubStaysOutOfRomCode)
{
    m_restartEndsInRom = false;
    EXPECT_FALSE(Hub_OpenRomDevice());
    EXPECT_EQ(LastError, 12);
    EXPECT_FALSE(Hub_IsOpen());
    EXPECT_THAT(m_bus.requests(),
                ElementsAre(kGreeting, kReadStatus, kReadStatus, kRestartIntoRom, kGreeting, kReadStatus));
}

TEST_F(OpenRomDevice, TreatsAnUnreadableStatusBlockAsNoRomCode)
{
    runRomCode();
    m_readResults = {kStalled, kStalled, kStalled};
    EXPECT_FALSE(Hub_OpenRomDevice());
    EXPECT_EQ(LastError, 12);
    EXPECT_FALSE(Hub_IsOpen());
    EXPECT_THAT(m_bus.requests(),
                ElementsAre(kGreeting, kReadStatus, kReadStatus, kRestartIntoRom, kGreeting, kReadStatus));
}

TEST_F(OpenRomDevice, FailsClosedWhenTheRestartIsRefused)
{
    m_commandResults = {kStalled};
    EXPECT_FALSE(Hub_OpenRomDevice());
    EXPECT_FALSE(Hub_IsOpen());
    EXPECT_EQ(LastError, 0);
    EXPECT_EQ(m_clock.pauses(), times(3, 128ms));
}

TEST_F(OpenRomDevice, FailsWhenTheHubStaysAway)
{
    m_clock.onSleep = [this](Clock::Duration) { m_bus.attached.clear(); };
    EXPECT_FALSE(Hub_OpenRomDevice());
    EXPECT_EQ(LastError, 5);
    EXPECT_EQ(m_clock.pauses(), times(20, 2s));
}

TEST_F(EraseFlash, SendsOneRequestAtAddressZeroAndPausesAfterIt)
{
    open();
    EXPECT_TRUE(Hub_EraseFlash());
    EXPECT_THAT(m_bus.requests(), ElementsAre(kEraseFlash));
    EXPECT_EQ(m_clock.pauses(), times(1, 128ms));
}

TEST_F(EraseFlash, SucceedsOnTheThirdAttempt)
{
    open();
    m_commandResults = {kStalled, kStalled, 0};
    EXPECT_TRUE(Hub_EraseFlash());
    EXPECT_THAT(m_bus.requests(), ElementsAre(kEraseFlash, kEraseFlash, kEraseFlash));
    EXPECT_EQ(m_clock.pauses(), times(3, 128ms));
}

TEST_F(EraseFlash, FailsAfterThreeAttempts)
{
    open();
    m_commandResults = {kStalled, kStalled, kStalled, 0};
    EXPECT_FALSE(Hub_EraseFlash());
    EXPECT_THAT(m_bus.requests(), ElementsAre(kEraseFlash, kEraseFlash, kEraseFlash));
    EXPECT_EQ(m_clock.pauses(), times(3, 128ms));
    EXPECT_TRUE(Hub_IsOpen());
}

TEST_F(EraseFlash, SendsNothingWithoutAHub)
{
    EXPECT_FALSE(Hub_EraseFlash());
    EXPECT_THAT(m_bus.requests(), IsEmpty());
    EXPECT_EQ(m_clock.pauses(), times(3, 128ms));
}

TEST_F(FlashTransfers, SplitTheAddressOfAWriteIntoTwoWords)
{
    open();
    const std::array<std::uint8_t, 3> data{0xAA, 0xBB, 0xCC};
    EXPECT_EQ(Hub_WriteFlash(0x89AB4567, data.data(), 3), 0U);
    EXPECT_THAT(m_bus.requests(), ElementsAre(SeenRequest{{0x40, 0xC8, 0x67, 0x45, 0xAB, 0x89, 0x03, 0x00},
                                                          {0xAA, 0xBB, 0xCC}}));
}

TEST_F(FlashTransfers, SplitTheAddressOfAReadIntoTwoWords)
{
    open();
    std::array<std::uint8_t, 4> data{};
    EXPECT_EQ(Hub_ReadFlash(0x00012345, data.data(), 4), 0U);
    EXPECT_EQ(data, (std::array<std::uint8_t, 4>{1, 2, 3, 4}));
    EXPECT_THAT(m_bus.requests(), ElementsAre(SeenRequest{{0xC0, 0xD8, 0x45, 0x23, 0x01, 0x00, 0x04, 0x00}}));
}

TEST_F(FlashTransfers, WriteAWholeImageWithAShorterLastPiece)
{
    open();
    std::vector<std::uint8_t> image(2 * 4096 + 5);
    std::iota(image.begin(), image.end(), std::uint8_t{0});
    std::uint32_t address = 0;
    while (address < image.size()) {
        const auto piece = static_cast<std::uint16_t>(std::min<std::size_t>(4096, image.size() - address));
        EXPECT_EQ(Hub_WriteFlash(address, image.data() + address, piece), 0U);
        address += piece;
    }
    const std::vector<SeenRequest> seen = m_bus.requests();
    ASSERT_THAT(seen, SizeIs(3));
    EXPECT_THAT(seen[1].setup, ElementsAre(0x40, 0xC8, 0x00, 0x10, 0x00, 0x00, 0x00, 0x10));
    EXPECT_THAT(seen[2].setup, ElementsAre(0x40, 0xC8, 0x00, 0x20, 0x00, 0x00, 0x05, 0x00));
    EXPECT_THAT(seen[2].sent, ElementsAre(0, 1, 2, 3, 4));
}

TEST_F(FlashTransfers, MoveTheMostThatALengthCanSay)
{
    open();
    std::vector<std::uint8_t> image(0xFFFF, 0x5A);
    EXPECT_EQ(Hub_WriteFlash(0xFFFFFFFF, image.data(), 0xFFFF), 0U);
    const std::vector<SeenRequest> seen = m_bus.requests();
    ASSERT_THAT(seen, SizeIs(1));
    EXPECT_THAT(seen[0].setup, ElementsAre(0x40, 0xC8, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF));
    EXPECT_THAT(seen[0].sent, AllOf(SizeIs(0xFFFF), Each(0x5A)));
}

TEST_F(FlashTransfers, ReturnTheStatusWithoutRetryOrPause)
{
    open();
    m_commandResults = {kStalled, 0xE0004051};
    std::array<std::uint8_t, 4> data{};
    EXPECT_EQ(Hub_WriteFlash(0, data.data(), 4), kStalled);
    EXPECT_EQ(Hub_ReadFlash(0, data.data(), 4), 0xE0004051U);
    EXPECT_THAT(m_bus.requests(), SizeIs(2));
    EXPECT_THAT(m_clock.pauses(), IsEmpty());
    Hub_CloseDevice();
    EXPECT_EQ(Hub_WriteFlash(0, data.data(), 4), 0xE00002F0U);
    EXPECT_EQ(Hub_ReadFlash(0, data.data(), 4), 0xE00002F0U);
}

} // namespace
} // namespace vornadel::test
