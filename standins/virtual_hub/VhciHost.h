#pragma once

#include "platform/Clock.h"
#include "standins/virtual_hub/DeviceLink.h"
#include "standins/virtual_hub/HubHost.h"
#include "standins/virtual_hub/VhciPorts.h"

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace vornadel
{

/// Attaches the halves to virtual ports of this machine's kernel. The kernel treats the SuperSpeed
/// and the high-speed port at one place of a controller as one connector, so the halves of a hub
/// share a place and no two hubs do. Each connector of the simulated hubs keeps its place.
class VhciHost final : public HubHost
{
public:
    /// The ports and the clock outlive the host.
    VhciHost(const VhciPorts& ports, Clock& clock)
        : m_ports(ports), m_reservations(ports), m_clock(clock)
    {
    }

    /// Returns when the kernel has the device, when it has ignored it for a few seconds, or when
    /// the hub has left again.
    bool attach(const VirtualDevice& device, std::string& error) override;
    void beginDetach(unsigned hub, HubSpeed half) override;
    void finishDetach(unsigned hub, HubSpeed half) override;
    std::string busId(unsigned hub, HubSpeed half) override;

private:
    using Half = std::pair<unsigned, HubSpeed>;
    struct Seat {
        VhciPorts::Port port;
        std::shared_ptr<DeviceLink> link; // null: off the bus, port remembered
    };

    const VhciPorts::Port* choosePort(const VirtualDevice& device,
                                      const std::vector<VhciPorts::Port>& ports,
                                      std::string& error) const;
    int preference(const std::string& place, const VhciPorts::Port& port) const;
    bool isAnotherHubLeaving(const VirtualDevice& device);
    bool plugIn(const VirtualDevice& device, VhciPorts::Port& port, std::string& error);
    std::shared_ptr<DeviceLink> linkOf(const Half& half);
    template <typename Condition>
    bool waitUntil(const Condition& condition, Clock::Duration longest);

    const VhciPorts& m_ports;
    const VhciPorts::Reservations m_reservations;
    Clock& m_clock;
    std::mutex m_mutex; // guards what follows, and the time between choosing a port and taking it
    std::map<Half, Seat> m_seats;
    std::map<std::string, VhciPorts::Port> m_places; // where each connector was last
};

} // namespace vornadel
