#pragma once

#include "standins/sim/SimulatedHub.h"
#include "standins/virtual_hub/HubHost.h"

#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <mutex>
#include <string>
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

/// A hub with its flash in memory, configured as on a command line. On error: null, and a test
/// failure.
inline std::shared_ptr<SimulatedHub> hubInMemory(const std::string& options, Clock& clock)
{
    SimulatedHubOptions parsed;
    std::string error;
    EXPECT_TRUE(parseSimulatedHubOptions(options, parsed, error)) << error;
    parsed.keepInMemory = true;
    std::shared_ptr<SimulatedHub> hub = SimulatedHub::create(parsed, clock, error);
    EXPECT_NE(hub, nullptr) << error;
    return hub;
}

} // namespace vornadel::test
