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

/// A simulated hub whose halves follow it onto the bus of a host and off it: at every restart, plug
/// and unplug. A thread of its own does the following. The hub and the host outlive it, and the hub
/// has no other listener.
class VirtualHub
{
public:
    /// `complain` is told, on that thread, why a half that came back could not be put onto the bus.
    VirtualHub(unsigned number, std::shared_ptr<SimulatedHub> hub, HubHost& host,
               std::function<void(const std::string&)> complain);
    VirtualHub(const VirtualHub&) = delete;
    VirtualHub& operator=(const VirtualHub&) = delete;
    ~VirtualHub(); ///< takes the halves off the bus

    /// Puts the halves onto the bus, SuperSpeed first, and begins to follow. False and a sentence
    /// in `error` when that fails, or when another program has the hub's flash. To be called once.
    bool start(std::string& error);

    /// Waits until the bus shows what the hub did up to now. After start().
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
    std::array<std::uint64_t, kHubSpeedCount> m_stays{}; // the stay for which a half is on the bus;
                                                         // 0: it is not

    std::mutex m_mutex; // guards what follows
    std::condition_variable m_changed;
    bool m_behind = false; // the hub has done something that the bus does not show yet
    bool m_busy = false;
    bool m_ending = false;
    std::thread m_thread;
};

} // namespace vornadel
