#include "virtual_hub/VhciHost.h"

#include "virtual_hub/UrbExchange.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <sys/socket.h>
#include <unistd.h>

namespace vornadel
{

bool VhciHost::attach(const VirtualDevice& device, std::string& error)
{
    VhciPorts::Port port;
    {
        const std::lock_guard lock(m_mutex);
        if (!plugIn(device, port, error)) {
            return false;
        }
    }
    waitUntil([&] { return m_ports.occupied(port) || !device.present(); });
    return true;
}

void VhciHost::beginDetach(unsigned hub, HubPort half)
{
    if (const std::shared_ptr<DeviceLink> link = linkOf({hub, half})) {
        link->leave();
    }
}

void VhciHost::finishDetach(unsigned hub, HubPort half)
{
    const std::shared_ptr<DeviceLink> link = linkOf({hub, half});
    if (!link) {
        return;
    }
    link->join();
    VhciPorts::Port port;
    {
        const std::lock_guard lock(m_mutex);
        Seat& seat = m_seats.at({hub, half});
        seat.link.reset();
        port = seat.port;
    }
    waitUntil([&] { return !m_ports.occupied(port); });
}

std::string VhciHost::busId(unsigned hub, HubPort half)
{
    const std::lock_guard lock(m_mutex);
    const auto seat = m_seats.find({hub, half});
    return seat != m_seats.end() && seat->second.link ? m_ports.busId(seat->second.port) : std::string();
}

std::shared_ptr<DeviceLink> VhciHost::linkOf(const Half& half)
{
    const std::lock_guard lock(m_mutex);
    const auto seat = m_seats.find(half);
    return seat != m_seats.end() ? seat->second.link : nullptr;
}

/// The port that the half had before if it is free; else the first free one that no other half will come back to, and
/// when there is none, any free one.
const VhciPorts::Port* VhciHost::choosePort(const Half& half, const std::vector<VhciPorts::Port>& ports) const
{
    const VhciPorts::Port* chosen = nullptr;
    int rank = 0;
    for (const VhciPorts::Port& port : ports) {
        if (!port.free || port.speed != half.second) {
            continue;
        }
        const auto owner = std::find_if(m_seats.begin(), m_seats.end(), [&](const auto& seat) {
            return seat.second.port.number == port.number;
        });
        const int found = owner == m_seats.end() ? 2 : owner->first == half ? 3 : 1;
        if (found > rank) {
            rank = found;
            chosen = &port;
        }
    }
    return chosen;
}

bool VhciHost::plugIn(const VirtualDevice& device, VhciPorts::Port& port, std::string& error)
{
    constexpr int kTries = 8; // other programs may take ports meanwhile
    const Half half = {device.hub, device.half};
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
        error = "no socket for the device: " + std::string(std::strerror(errno));
        return false;
    }
    VhciPorts::Attach outcome = VhciPorts::Attach::Taken;
    for (int tried = 0; tried < kTries && outcome == VhciPorts::Attach::Taken; ++tried) {
        const std::vector<VhciPorts::Port> ports = m_ports.list(error);
        if (ports.empty()) {
            break;
        }
        const VhciPorts::Port* const chosen = choosePort(half, ports);
        if (chosen == nullptr) {
            error = "vhci_hcd has no free ";
            error += device.half == HubPort::SuperSpeed ? "SuperSpeed port" : "high-speed port";
            break;
        }
        port = *chosen;
        outcome = m_ports.attach(port, ends[0], deviceNumber(device), error);
    }
    close(ends[0]); // the kernel has its own reference
    if (outcome != VhciPorts::Attach::Done) {
        close(ends[1]);
        return false;
    }
    m_seats[half] = {port,
                     std::make_shared<DeviceLink>(ends[1], std::make_unique<UrbExchange>(device), m_clock)};
    return true;
}

/// Looks again and again, for some seconds at most.
template <typename Condition>
void VhciHost::waitUntil(const Condition& condition)
{
    constexpr Clock::Duration kBetweenLooks = std::chrono::milliseconds(5);
    constexpr Clock::Duration kLongest = std::chrono::seconds(10);
    for (Clock::Duration waited(0); waited < kLongest && !condition(); waited += kBetweenLooks) {
        m_clock.sleep(kBetweenLooks);
    }
}

} // namespace vornadel
