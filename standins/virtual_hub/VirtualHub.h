#pragma once

#include "standins/sim/SimulatedHub.h"
#include "standins/virtual_hub/HubHost.h"

#include <array>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace vornadel
{

/// Keeps a host's bus in step with a simulated hub: at every restart, plug and unplug it attaches
/// or detaches the halves, on its own thread. The hub and the host must outlive it, and the hub
/// must have no other listener.
class VirtualHub
{
public:
    /// `complain` is called on that thread if a half that came back could not be attached.
    VirtualHub(unsigned number, std::shared_ptr<SimulatedHub> hub, HubHost& host,
               std::function<void(const std::string&)> complain);
    VirtualHub(const VirtualHub&) = delete;
    VirtualHub& operator=(const VirtualHub&) = delete;
    ~VirtualHub(); ///< takes the halves off the bus

    /// Attaches the halves, SuperSpeed first, and starts the thread. False and a sentence in
    /// `error` if that fails, or if another program has the hub's flash. Call it once.
    bool start(std::string& error);

    /// Waits until the bus is up to date with the hub. After start().
    void waitUntilShown();

    SimulatedHub& hub() { return *m_hub; }
    std::string busId(HubSpeed half) { return m_host.busId(m_number, half); }

private:
    void follow();
    bool catchUp(std::string& error);
    bool attach(const AttachedHalf& half, std::string& error);
    bool stays(const AttachedHalf& half) const;
    std::uint32_t vendorRequest(const AttachedHalf& half, ControlRequest& request);
    void detach(const std::function<bool(HubSpeed)>& leaves);

    const unsigned m_number;
    const std::shared_ptr<SimulatedHub> m_hub;
    HubHost& m_host;
    const std::function<void(const std::string&)> m_complain;
    // The session for which a half is on the bus; 0: it is not.
    std::array<std::uint64_t, kHubSpeedCount> m_stays{};

    std::mutex m_mutex; // guards what follows
    std::condition_variable m_changed;
    bool m_behind = false; // the bus is not up to date with the hub
    bool m_busy = false;
    bool m_ending = false;
    std::thread m_thread;
};

} // namespace vornadel
