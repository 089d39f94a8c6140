#include "standins/virtual_hub/VhciHost.h"

#include "standins/virtual_hub/UrbExchange.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <exception>
#include <sys/socket.h>
#include <unistd.h>

namespace vornadel
{

using namespace std::chrono_literals;

namespace
{

HubSpeed otherHalf(HubSpeed half)
{
    return half == HubSpeed::SuperSpeed ? HubSpeed::HighSpeed : HubSpeed::SuperSpeed;
}

bool samePlace(const VhciPorts::Port& one, const VhciPorts::Port& other)
{
    return one.controller == other.controller && one.place == other.place;
}

} // namespace

bool VhciHost::attach(const VirtualDevice& device, std::string& error)
{
    VhciPorts::Port port;
    waitUntil([&] { return !isAnotherHubLeaving(device) || !device.present(); }, 3s);
    {
        const VhciPorts::Turn turn(m_ports);
        if (!waitUntil([&] { return turn.come(); }, 10s)) {
            error = "another program keeps taking ports of vhci_hcd";
            return false;
        }
        const std::lock_guard lock(m_mutex);
        if (!plugIn(device, port, error)) {
            return false;
        }
    }
    waitUntil([&] { return m_ports.occupied(port) || !device.present(); }, 10s);
    return true;
}

void VhciHost::beginDetach(unsigned hub, HubSpeed half)
{
    if (const std::shared_ptr<DeviceLink> link = linkOf({hub, half})) {
        link->leave();
    }
}

void VhciHost::finishDetach(unsigned hub, HubSpeed half)
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
    // A kernel that is busy with other ports notices late that a device has left. If it is back by
    // then, the kernel takes it for the same stay.
    const std::string stay = m_ports.deviceAt(port);
    waitUntil([&] { return stay.empty() || m_ports.deviceAt(port) != stay; }, 30s);
    // Another program may have taken the port as soon as it was free.
    waitUntil([&] { return !m_ports.occupied(port) && !m_ports.taken(port); }, 3s);
}

std::string VhciHost::busId(unsigned hub, HubSpeed half)
{
    const std::lock_guard lock(m_mutex);
    const auto seat = m_seats.find({hub, half});
    return seat != m_seats.end() && seat->second.link ? m_ports.busId(seat->second.port)
                                                      : std::string();
}

std::shared_ptr<DeviceLink> VhciHost::linkOf(const Half& half)
{
    const std::lock_guard lock(m_mutex);
    const auto seat = m_seats.find(half);
    return seat != m_seats.end() ? seat->second.link : nullptr;
}

/// The second half of a hub goes to the place of the first. The first half needs a place where both
/// ports are free; otherwise another device has the port beside it. Null and a sentence in `error`
/// if there is no such place.
const VhciPorts::Port* VhciHost::choosePort(const VirtualDevice& device,
                                            const std::vector<VhciPorts::Port>& ports,
                                            std::string& error) const
{
    const auto isFree = [&](const VhciPorts::Port& place, HubSpeed speed) {
        return std::any_of(ports.begin(), ports.end(), [&](const VhciPorts::Port& port) {
            return port.free && port.speed == speed && samePlace(port, place);
        });
    };
    const HubSpeed otherSpeed = otherHalf(device.half);
    const auto sister = m_seats.find({device.hub, otherSpeed});
    const bool hasSister = sister != m_seats.end() && sister->second.link;
    const VhciPorts::Port* chosen = nullptr;
    int best = 0;
    for (const VhciPorts::Port& port : ports) {
        if (port.speed != device.half || !port.free || m_reservations.isOfAnother(port) ||
            !(hasSister ? samePlace(port, sister->second.port) : isFree(port, otherSpeed))) {
            continue;
        }
        if (const int found = preference(device.place, port); found > best) {
            best = found;
            chosen = &port;
        }
    }
    if (chosen == nullptr) {
        error = hasSister ? "the vhci_hcd port beside the hub's other half is in use"
                          : "vhci_hcd has no free pair of a SuperSpeed and a high-speed port";
    }
    return chosen;
}

/// 3: where this connector was before; 2: an unused place; 1: where another connector was.
int VhciHost::preference(const std::string& place, const VhciPorts::Port& port) const
{
    int found = 2;
    for (const auto& [name, known] : m_places) {
        if (samePlace(known, port)) {
            if (name == place) {
                return 3;
            }
            found = 1;
        }
    }
    return found;
}

/// Whether the hub that had the device's connector before is not quite off the bus yet.
bool VhciHost::isAnotherHubLeaving(const VirtualDevice& device)
{
    const std::lock_guard lock(m_mutex);
    const auto place = m_places.find(device.place);
    return place != m_places.end() &&
           std::any_of(m_seats.begin(), m_seats.end(), [&](const auto& entry) {
               const auto& [half, seat] = entry;
               return half.first != device.hub && samePlace(seat.port, place->second) &&
                      (seat.link || m_ports.taken(seat.port));
           });
}

bool VhciHost::plugIn(const VirtualDevice& device, VhciPorts::Port& port, std::string& error)
{
    constexpr int kTries = 8; // other programs may take ports meanwhile
    const Half half = {device.hub, device.half};
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
        error = "cannot create a socket for the device: " + std::string(std::strerror(errno));
        return false;
    }
    VhciPorts::Attach outcome = VhciPorts::Attach::Taken;
    for (int tried = 0; tried < kTries && outcome == VhciPorts::Attach::Taken; ++tried) {
        const std::vector<VhciPorts::Port> ports = m_ports.list(error);
        if (ports.empty()) {
            break;
        }
        const VhciPorts::Port* const chosen = choosePort(device, ports, error);
        if (chosen == nullptr) {
            break;
        }
        port = *chosen;
        m_reservations.take(port);
        outcome = m_ports.attach(port, ends[0], deviceNumber(device), error);
    }
    close(ends[0]); // the kernel has its own reference
    if (outcome != VhciPorts::Attach::Done) {
        close(ends[1]);
        return false;
    }
    std::shared_ptr<DeviceLink> link;
    try {
        link =
            std::make_shared<DeviceLink>(ends[1], std::make_unique<UrbExchange>(device), m_clock);
    } catch (const std::exception& problem) {
        error = "cannot start a thread for the device: " + std::string(problem.what());
        close(ends[1]); // the kernel frees the port
        return false;
    }
    m_places[device.place] = port;
    m_seats[half] = {port, std::move(link)};
    return true;
}

/// Polls until the condition holds, at most for `longest`, including the time that polling takes.
/// False on time-out.
template <typename Condition>
bool VhciHost::waitUntil(const Condition& condition, Clock::Duration longest)
{
    constexpr Clock::Duration kBetweenLooks = std::chrono::milliseconds(5);
    const Clock::Duration end = m_clock.now() + longest;
    while (!condition()) {
        if (m_clock.now() >= end) {
            return false;
        }
        m_clock.sleep(kBetweenLooks);
    }
    return true;
}

} // namespace vornadel
