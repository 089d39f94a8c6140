#include "hub/RequestText.h"
#include "tests/hub/BenchHub.h"

#include <chrono>
#include <initializer_list>
#include <utility>

namespace vornadel::test
{
namespace
{

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

using StatusBlock = HubCommands;
using SendModeCommand = HubCommands;
using EraseFlash = HubCommands;
using FlashTransfers = HubCommands;

TEST_F(StatusBlock, IsReadWithOneRequestOfItsLength)
{
    open();
    m_status[7] = 0x77;
    HubStatusBlock block{};
    EXPECT_EQ(Hub_ReadStatusBlock(block), 0U);
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

TEST_F(StatusBlock, IsVersionZeroAndNoRomCodeWhenItCannotBeRead)
{
    open();
    m_status[10] = 0x12;
    runRomCode();
    m_readResults = {kStalled, kStalled};
    EXPECT_EQ(Hub_GetFwVersion(), 0);
    EXPECT_FALSE(Hub_IsRomMode());
    Hub_CloseDevice();
    EXPECT_EQ(Hub_GetFwVersion(), 0);
    EXPECT_FALSE(Hub_IsRomMode());
}

TEST_F(SendModeCommand, SendsTheRequestOfEachModeAndCloses)
{
    const std::vector<std::pair<std::uint8_t, SeenRequest>> modes = {
        {0x21, kRestartIntoRom}, {0x22, kRestartIntoFlash}, {0x00, kModeZero}};
    for (const auto& [mode, request] : modes) {
        open();
        EXPECT_TRUE(Hub_SendModeCommand(mode));
        EXPECT_FALSE(Hub_IsOpen());
        EXPECT_THAT(m_bus.requests(), ElementsAre(request)) << "mode " << +mode;
        EXPECT_THAT(m_bus.events(), ElementsAre("close 0", "drop 0"));
    }
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

TEST_F(EraseFlash, SendsOneRequestAtAddressZeroAndPausesAfterIt)
{
    open();
    EXPECT_TRUE(Hub_EraseFlash());
    EXPECT_THAT(m_bus.requests(), ElementsAre(kEraseFlash));
    EXPECT_EQ(m_clock.pauses(), times(1, 128ms));
}

TEST_F(EraseFlash, IsTriedThreeTimes)
{
    open();
    for (const bool succeeds : {true, false}) {
        m_bus.forget();
        m_clock.forgetPauses();
        m_commandResults = {kStalled, kStalled, succeeds ? 0U : kStalled};
        EXPECT_EQ(Hub_EraseFlash(), succeeds);
        EXPECT_THAT(m_bus.requests(), ElementsAre(kEraseFlash, kEraseFlash, kEraseFlash));
        EXPECT_EQ(m_clock.pauses(), times(3, 128ms));
        EXPECT_TRUE(Hub_IsOpen());
    }
}

TEST_F(FlashTransfers, SplitTheAddressOfAWriteIntoTwoWords)
{
    open();
    const std::array<std::uint8_t, 3> data{0xAA, 0xBB, 0xCC};
    EXPECT_EQ(Hub_WriteFlash(0x89AB4567, data), 0U);
    EXPECT_THAT(m_bus.requests(),
                ElementsAre(SeenRequest{{0x40, 0xC8, 0x67, 0x45, 0xAB, 0x89, 0x03, 0x00},
                                        {0xAA, 0xBB, 0xCC}}));
}

TEST_F(FlashTransfers, SplitTheAddressOfAReadIntoTwoWords)
{
    open();
    std::array<std::uint8_t, 4> data{};
    EXPECT_EQ(Hub_ReadFlash(0x00012345, data), 0U);
    EXPECT_EQ(data, (std::array<std::uint8_t, 4>{1, 2, 3, 4}));
    EXPECT_THAT(m_bus.requests(),
                ElementsAre(SeenRequest{{0xC0, 0xD8, 0x45, 0x23, 0x01, 0x00, 0x04, 0x00}}));
}

TEST_F(FlashTransfers, ReturnTheStatusWithoutRetryOrPause)
{
    open();
    m_commandResults = {kStalled, 0xE0004051};
    std::array<std::uint8_t, 4> data{};
    EXPECT_EQ(Hub_WriteFlash(0, data), kStalled);
    EXPECT_EQ(Hub_ReadFlash(0, data), 0xE0004051U);
    EXPECT_THAT(m_bus.requests(), SizeIs(2));
    EXPECT_THAT(m_clock.pauses(), IsEmpty());
    Hub_CloseDevice();
    EXPECT_EQ(Hub_WriteFlash(0, data), 0xE00002F0U);
    EXPECT_EQ(Hub_ReadFlash(0, data), 0xE00002F0U);
}

TEST(RequestText, TellsWhatTheHubIsAsked)
{
    std::array<std::uint8_t, 16> data{};
    const std::pair<ControlRequest, std::string> rows[] = {
        {{0x40, 0x01}, "mode 0"},
        {{0x40, 0xE9, 0x0101}, "restart into flash code"},
        {{0xC0, 0xD8, 0x2345, 0x0001, {}, data}, "read 16 bytes at 0x12345"},
        {{0xC1, 0xD8, 0x00AB, 0x0102, {}, data}, "request C1 D8, value 00AB, index 0102, 16 bytes"},
    };
    for (const auto& [request, text] : rows) {
        EXPECT_EQ(Hub_RequestText(request), text);
    }
}

} // namespace
} // namespace vornadel::test
