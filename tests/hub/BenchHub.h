#pragma once

#include "hub/HubCommands.h"
#include "tests/hub/HubTest.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <deque>
#include <numeric>
#include <vector>

namespace vornadel::test
{

inline constexpr std::uint32_t kStalled = 0xE000404F;

inline const SeenRequest kReadStatus{{0xC0, 0x09, 0x00, 0x00, 0x00, 0x00, 0x20, 0x00}};
inline const SeenRequest kRestartIntoRom{{0x40, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00}};
inline const SeenRequest kModeZero{{0x40, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00}};
inline const SeenRequest kRestartIntoFlash{{0x40, 0xE9, 0x01, 0x01, 0x00, 0x00, 0x00, 0x00}};
inline const SeenRequest kEraseFlash{{0x40, 0xE8, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00}};

/// A hub with prepared answers: its status block, and the statuses of its next answers by request.
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

    /// Searches no longer find the open hub; it is back before the `attempt`-th open.
    void comesBackAt(int attempt)
    {
        m_bus.attached.clear();
        m_clock.onSleep = [this, attempt, sleeps = 0](Clock::Duration) mutable {
            if (++sleeps == attempt) {
                m_bus.attached = {{kVendor, kSuperSpeed}};
            }
        };
    }

    /// The statuses of the next answers to request 0x09, to restarts and erases; 0 after the last.
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
            std::copy_n(m_status.begin(), std::min(request.in.size(), m_status.size()),
                        request.in.begin());
            return nextOf(m_readResults);
        case 0xD8:
            std::iota(request.in.begin(), request.in.end(), std::uint8_t{1});
            return nextOf(m_commandResults);
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

inline std::vector<Clock::Duration> times(std::size_t count, Clock::Duration pause)
{
    return std::vector<Clock::Duration>(count, pause);
}

} // namespace vornadel::test
