#pragma once

#include "base/LastError.h"
#include "hub/HubFailure.h"
#include "hub/HubTransport.h"
#include "hub/SupportedIds.h"
#include "tests/support/ScriptedBus.h"
#include "tests/support/VirtualClock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
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

/// Keeps an object until the process ends: a defect may leave the hub open or claimed, and then the
/// next tests use the bus and the clock of this one. They must fail, not crash.
template <typename Object>
Object& keptForGood()
{
    static auto& kept = *new std::vector<std::unique_ptr<Object>>;
    return *kept.emplace_back(std::make_unique<Object>());
}

/// One supported hub on a scripted bus, and a virtual clock.
class HubTest : public ::testing::Test
{
public:
    ~HubTest() override
    {
        Hub_CloseDevice();
        EXPECT_FALSE(Hub_IsOpen());
        m_bus.forgetHooks();
        m_clock.onSleep = nullptr;
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
        setLastFailure(HubFailure::None);
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

    ScriptedBus& m_bus = keptForGood<ScriptedBus>();
    VirtualClock& m_clock = keptForGood<VirtualClock>();
};

} // namespace vornadel::test
