#pragma once

#include "standins/sim/DemoImage.h"
#include "standins/sim/SimulatedHub.h"
#include "standins/virtual_hub/Console.h"
#include "standins/virtual_hub/HubHost.h"
#include "tests/support/VirtualClock.h"

#include <array>
#include <cstdlib>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace vornadel::test
{

/// A bus on which everything succeeds at once; records the calls.
class RecordingHost final : public HubHost
{
public:
    bool attach(const VirtualDevice& device, std::string& error) override
    {
        const std::lock_guard lock(m_mutex);
        if (!m_refusal.empty()) {
            error = m_refusal;
            return false;
        }
        m_told.push_back("attach " + name(device.half));
        m_devices[device.half] = device;
        return true;
    }
    void beginDetach(unsigned /*hub*/, HubSpeed half) override
    {
        const std::lock_guard lock(m_mutex);
        m_told.push_back("begin " + name(half));
    }
    void finishDetach(unsigned /*hub*/, HubSpeed half) override
    {
        const std::lock_guard lock(m_mutex);
        m_told.push_back("finish " + name(half));
        m_devices.erase(half);
    }
    std::string busId(unsigned hub, HubSpeed half) override
    {
        const std::lock_guard lock(m_mutex);
        return m_devices.count(half) == 0 ? "" : name(half) + std::to_string(hub);
    }

    VirtualDevice device(HubSpeed half)
    {
        const std::lock_guard lock(m_mutex);
        return m_devices.at(half);
    }
    /// The halves on the bus, "super" before "high".
    std::vector<std::string> attached()
    {
        const std::lock_guard lock(m_mutex);
        std::vector<std::string> names;
        for (const auto& [half, device] : m_devices) {
            names.push_back(name(half));
        }
        return names;
    }
    /// All events since the last call, in order.
    std::vector<std::string> told()
    {
        const std::lock_guard lock(m_mutex);
        return std::exchange(m_told, {});
    }
    /// From now on an attach fails, for this reason.
    void refuse(const std::string& reason)
    {
        const std::lock_guard lock(m_mutex);
        m_refusal = reason;
    }

private:
    static std::string name(HubSpeed half)
    {
        return half == HubSpeed::SuperSpeed ? "super" : "high";
    }

    std::mutex m_mutex;
    std::map<HubSpeed, VirtualDevice> m_devices;
    std::vector<std::string> m_told;
    std::string m_refusal;
};

/// A hub with the demo image in its flash, in memory.
inline std::shared_ptr<SimulatedHub> hubInMemory(Clock& clock,
                                                 SimulatedLatency latency = SimulatedLatency::None,
                                                 HubCode code = HubCode::Flash)
{
    // Made once, because that takes longer than all the rest.
    static const std::vector<std::uint8_t> demo = demoImage();
    SimulatedHubOptions options;
    options.initialFlash = demo;
    options.keepInMemory = true;
    options.latency = latency;
    options.mode = code;
    std::string error;
    return SimulatedHub::create(options, clock, error);
}

/// Two hubs, each on its own bus, and their console.
struct TwoHubs {
    TwoHubs()
    {
        for (unsigned number = 1; number <= 2; ++number) {
            std::string error;
            sims.push_back(hubInMemory(clock));
            hubs.push_back(std::make_unique<VirtualHub>(number, sims.back(), hosts.at(number - 1),
                                                        [](const std::string&) { std::abort(); }));
            if (!hubs.back()->start(error)) {
                std::abort();
            }
        }
    }

    VirtualClock clock;
    std::array<RecordingHost, 2> hosts;
    std::vector<std::shared_ptr<SimulatedHub>> sims;
    std::vector<std::unique_ptr<VirtualHub>> hubs;
    Console console{hubs};
};

} // namespace vornadel::test
