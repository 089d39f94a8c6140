#pragma once

#include "HubTestBus.h"
#include "base/LastError.h"
#include "hub/HubTransport.h"
#include "hub/SupportedIds.h"
#include "tests/support/VirtualClock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace vornadel::test
{

inline constexpr std::uint16_t kVendor = 0x1111;
inline constexpr std::uint16_t kSuperSpeed = 0x3300;
inline constexpr std::uint16_t kHighSpeed = 0x2200;

/// The request that follows every open.
inline const SeenRequest kOpenTime{
    {0x40, 0x02, 0x01, 0x00, HUB_MAKER_VID & 0xFF, HUB_MAKER_VID >> 8 & 0xFF, 0x00, 0x00}};

/// One supported hub on a scripted bus, and a virtual clock.
class HubTest : public ::testing::Test
{
public:
    ~HubTest() override
    {
        Hub_CloseDevice();
        EXPECT_FALSE(Hub_IsOpen());
        SupportedIdList = {};
        HubMakerVid = 0;
    }

protected:
    HubTest()
    {
        SupportedIdList = {};
        SupportedIdList[0] = {1, kVendor, kSuperSpeed, kHighSpeed};
        m_bus.attached = {{kVendor, kSuperSpeed}};
        LastError = 0;
        Hub_UsePlatform(m_bus, m_clock);
    }

    /// Opens the hub and clears the record of the bus.
    void open()
    {
        ASSERT_TRUE(Hub_OpenDevice());
        m_bus.forget();
    }

    template <typename Work>
    static void onAnotherThread(Work work)
    {
        std::thread thread(std::move(work));
        thread.join();
    }

    HubTestBus m_bus;
    VirtualClock m_clock;
};

} // namespace vornadel::test
