#include "tests/hub/HubTest.h"

#include <atomic>

namespace vornadel::test
{
namespace
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class HubThreads : public HubTest
{
protected:
    // The results for a thread while another one owns the hub.
    static void expectBusy()
    {
        LastError = 0;
        EXPECT_FALSE(Hub_OpenDevice());
        EXPECT_EQ(LastError, 5);
        Hub_CloseDevice();
        EXPECT_EQ(Hub_ControlRequest({0x40, 0xE8}), 0xE00002F0U);
    }
};

TEST_F(HubThreads, FindTheHubBusyWhileAnotherHasItOpen)
{
    open();
    onAnotherThread([] {
        expectBusy();
        EXPECT_TRUE(Hub_IsOpen());
    });
    EXPECT_TRUE(Hub_IsOpen());
    EXPECT_THAT(m_bus.events(), IsEmpty());
    EXPECT_EQ(Hub_ControlRequest({0x40, 0xE8}), 0U);
    EXPECT_EQ(m_bus.requests().size(), 1U);
}

TEST_F(HubThreads, FindTheHubBusyWhileAnotherIsOpeningIt)
{
    m_bus.onOpen([] {
        onAnotherThread([] {
            expectBusy();
            EXPECT_FALSE(Hub_IsOpen());
        });
    });
    EXPECT_TRUE(Hub_OpenDevice());
    EXPECT_THAT(m_bus.events(), ElementsAre("search", "open 0"));
    EXPECT_THAT(m_bus.requests(), ElementsAre(kOpenTime));
}

TEST_F(HubThreads, FindTheHubBusyWhileAnotherIsClosingIt)
{
    open();
    m_bus.onClose([] {
        onAnotherThread([] {
            expectBusy();
            EXPECT_FALSE(Hub_IsOpen());
        });
    });
    Hub_CloseDevice();
    EXPECT_THAT(m_bus.events(), ElementsAre("close 0", "drop 0"));
}

TEST_F(HubThreads, AreNotHeldUpByATransferOfAnother)
{
    open();
    m_bus.onControl([](ControlRequest&) {
        onAnotherThread([] {
            expectBusy();
            EXPECT_TRUE(Hub_FindDevice());
        });
        return 0U;
    });
    EXPECT_EQ(Hub_ControlRequest({0x40, 0xE8}), 0U);
    EXPECT_EQ(m_bus.requests().size(), 1U);
    EXPECT_THAT(m_bus.events(), ElementsAre("search", "drop 0", "end of list"));
}

TEST_F(HubThreads, MayOpenTheHubOnceAnotherHasClosedItOrFailed)
{
    const auto anotherMayOpen = [] {
        onAnotherThread([] {
            EXPECT_TRUE(Hub_OpenDevice());
            Hub_CloseDevice();
        });
    };
    open();
    Hub_CloseDevice();
    anotherMayOpen();
    m_bus.attached[0].openStatus = UsbOpenStatus::Busy;
    EXPECT_FALSE(Hub_OpenDevice());
    m_bus.attached[0].openStatus = UsbOpenStatus::Opened;
    anotherMayOpen();
    m_bus.givesList = false;
    EXPECT_FALSE(Hub_OpenDevice());
    m_bus.givesList = true;
    anotherMayOpen();
}

TEST_F(HubThreads, NeverShareTheHub)
{
    std::atomic<int> holders{0};
    std::atomic<int> mostHolders{0};
    std::atomic<int> opened{0};
    m_bus.onControl([&](ControlRequest& request) {
        if (request.bRequest == 0x02) {
            const int now = ++holders;
            int most = mostHolders;
            while (now > most && !mostHolders.compare_exchange_weak(most, now)) {
            }
        }
        return 0U;
    });
    m_bus.onClose([&] { --holders; });
    constexpr int kThreads = 4;
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 500; ++round) {
                if (Hub_OpenDevice()) {
                    ++opened;
                    EXPECT_EQ(Hub_ControlRequest({0x40, 0xE8}), 0U);
                }
                Hub_CloseDevice();
                EXPECT_TRUE(Hub_FindDevice());
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_GT(opened, 0);
    EXPECT_EQ(mostHolders, 1);
    EXPECT_EQ(holders, 0);
}

} // namespace
} // namespace vornadel::test
