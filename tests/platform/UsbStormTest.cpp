// A loose plug with the real USB library: the hub leaves and returns a hundred times while updates
// run and the window's detection runs beside them.

#include "flows/FirmwareUpdate.h"
#include "hub/HubDetection.h"
#include "hub/HubTransport.h"
#include "hub/SupportedIds.h"
#include "platform/linux/LibusbBus.h"
#include "standins/sim/DemoImage.h"
#include "tests/platform/UsbTestbed.h"
#include "tests/support/HubGuard.h"
#include "tests/support/RecordingReporter.h"
#include "tests/support/VirtualClock.h"

#include <algorithm>
#include <atomic>
#include <gtest/gtest.h>
#include <mutex>
#include <thread>

namespace vornadel::test
{

namespace
{

constexpr int kCycles = 100;
using Kind = RecordingReporter::Kind;

/// A hub that always runs its ROM code, so an update does not make it leave the bus.
class RomHub
{
public:
    WireAnswer answer(const WireRequest& request)
    {
        const std::lock_guard lock(m_mutex);
        ++m_requests;
        const std::size_t address = request.wValue;
        switch (request.bRequest) {
        case 0x09: // status block: byte 15 is clear in ROM code
            return {.in = std::vector<std::uint8_t>(32, 0)};
        case 0xE8:
            std::fill(m_flash.begin(), m_flash.end(), std::uint8_t{0xFF});
            return {};
        case 0xC8:
            std::copy(request.out.begin(), request.out.end(),
                      m_flash.begin() + static_cast<std::ptrdiff_t>(address));
            return {};
        case 0xD8: {
            const auto from = m_flash.begin() + static_cast<std::ptrdiff_t>(address);
            return {.in = std::vector<std::uint8_t>(from, from + request.wLength)};
        }
        default:
            return {};
        }
    }

    std::vector<std::uint8_t> flash()
    {
        const std::lock_guard lock(m_mutex);
        return m_flash;
    }

    unsigned requests()
    {
        const std::lock_guard lock(m_mutex);
        return m_requests;
    }

private:
    std::mutex m_mutex;
    std::vector<std::uint8_t> m_flash = std::vector<std::uint8_t>(32768, 0xFF);
    unsigned m_requests = 0;
};

class UsbStorm : public testing::TestWithParam<bool>
{
public:
    UsbStorm(const UsbStorm&) = delete;
    UsbStorm& operator=(const UsbStorm&) = delete;
    ~UsbStorm() override { hubIsClosed(); }

protected:
    UsbStorm()
    {
        SupportedIdList.fill({});
        SupportedIdList.at(0) = {1, 0x1209, 0x0001, 0x0002};
        Hub_UsePlatform(m_bus, m_clock);
        const std::vector<std::uint8_t> bytes = demoImage();
        EXPECT_TRUE(FwImage_Parse(m_image, bytes.data(), static_cast<std::int32_t>(bytes.size())));
    }

    void plug()
    {
        m_testbed.plug("1-1", 0x1209, 0x0001,
                       [this](const WireRequest& request) { return m_hub.answer(request); });
    }

    /// Runs an update and checks that its result is true.
    bool update()
    {
        RecordingReporter reporter;
        const bool succeeded = updateFirmware(m_image, "demo.bin", reporter);
        EXPECT_EQ(reporter.texts(Kind::Red).size(), succeeded ? 0U : 2U);
        EXPECT_EQ(reporter.texts(succeeded ? Kind::Blue : Kind::Red).back(),
                  succeeded ? "Update FW Success\n" : "Update FW Fail\n");
        if (succeeded) {
            EXPECT_EQ(m_hub.flash(), demoImage());
        }
        return succeeded;
    }

    UsbTestbed m_testbed;
    RomHub m_hub;
    VirtualClock m_clock;
    LibusbBus m_bus{m_clock, {.forcePolling = GetParam(), .lockFolders = {m_testbed.lockFolder()}}};
    FwImage m_image;
};

TEST_P(UsbStorm, LeavesUpdatesAndDetectionsTruthful)
{
    std::atomic<int> events = 0;
    std::atomic<bool> over = false;
    ASSERT_TRUE(m_bus.watch([&](UsbEvent) { ++events; }));
    plug();
    std::thread storm([&] {
        for (int cycle = 0; cycle < kCycles; ++cycle) {
            // Until an update goes on.
            for (const unsigned seen = m_hub.requests(); m_hub.requests() == seen;) {
                std::this_thread::yield();
            }
            m_testbed.unplug("1-1");
            plug();
        }
        over = true;
    });
    std::thread detection([&] {
        for (int seen = 0; !over;) {
            if (const int now = events; now != seen) {
                seen = now;
                Hub_Detect();
            } else {
                std::this_thread::yield();
            }
        }
    });
    unsigned updates = 0;
    while (!over) {
        if (Hub_FindDevice()) {
            update();
            ++updates;
        }
    }
    storm.join();
    detection.join();
    m_bus.unwatch();
    EXPECT_FALSE(Hub_IsOpen());
    EXPECT_GT(updates, 0U);
    EXPECT_GT(events, 0);
    EXPECT_TRUE(update());
}

INSTANTIATE_TEST_SUITE_P(OfPlugs, UsbStorm, testing::Bool(), [](const auto& polling) {
    return polling.param ? "WhenPolled" : "WhenNotified";
});

} // namespace

} // namespace vornadel::test
