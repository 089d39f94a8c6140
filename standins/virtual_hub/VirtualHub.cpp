#include "standins/virtual_hub/VirtualHub.h"

#include <algorithm>
#include <system_error>
#include <utility>
#include <vector>

namespace vornadel
{

namespace
{

std::size_t indexOf(HubPort half) { return static_cast<std::size_t>(half); }

} // namespace

VirtualHub::VirtualHub(unsigned number, std::shared_ptr<SimulatedHub> hub, HubHost& host,
                       std::function<void(const std::string&)> complain)
    : m_number(number), m_hub(std::move(hub)), m_host(host), m_complain(std::move(complain))
{
}

VirtualHub::~VirtualHub()
{
    m_hub->notifier().unwatch();
    {
        const std::lock_guard lock(m_mutex);
        m_ending = true;
    }
    m_changed.notify_all();
    if (m_thread.joinable()) {
        m_thread.join();
    }
    detach([](HubPort) { return true; });
}

bool VirtualHub::start(std::string& error)
{
    for (const AttachedPort& port : m_hub->attachedPorts()) {
        if (!m_hub->open(port)) {
            error = "the flash file of hub " + std::to_string(m_number) +
                    " is in use by another hub or another program; image=FILE names another one";
            return false;
        }
    }
    m_hub->notifier().watch([this](UsbEvent) {
        {
            const std::lock_guard lock(m_mutex);
            m_behind = true;
        }
        m_changed.notify_all();
    });
    if (!catchUp(error)) {
        return false;
    }
    try {
        m_thread = std::thread([this] { follow(); });
    } catch (const std::system_error& problem) {
        error = "no thread for hub " + std::to_string(m_number) + ": " + problem.what();
        return false;
    }
    return true;
}

void VirtualHub::settle()
{
    std::unique_lock lock(m_mutex);
    m_behind = true; // the hub's own event may still be on its way
    m_changed.notify_all();
    m_changed.wait(lock, [this] { return !m_behind && !m_busy; });
}

void VirtualHub::follow()
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_behind || m_ending; });
        if (m_ending) {
            return;
        }
        m_behind = false;
        m_busy = true;
        lock.unlock();
        std::string error;
        if (!catchUp(error)) {
            m_complain(error);
        }
        lock.lock();
        m_busy = false;
        m_changed.notify_all();
    }
}

/// Makes the bus show what the hub is now: first everything off that has left, then on what has
/// come, in its order.
bool VirtualHub::catchUp(std::string& error)
{
    const std::vector<AttachedPort> there = m_hub->attachedPorts();
    detach([&](HubPort half) {
        return std::none_of(there.begin(), there.end(), [&](const AttachedPort& port) {
            return port.port == half && port.session == m_stays[indexOf(half)];
        });
    });
    return std::all_of(there.begin(), there.end(), [&](const AttachedPort& port) {
        return port.session == m_stays[indexOf(port.port)] || attach(port, error);
    });
}

void VirtualHub::detach(const std::function<bool(HubPort)>& leaves)
{
    std::vector<HubPort> leaving;
    for (const HubPort half : {HubPort::SuperSpeed, HubPort::HighSpeed}) {
        if (m_stays[indexOf(half)] != 0 && leaves(half)) {
            leaving.push_back(half);
            m_host.beginDetach(m_number, half);
        }
    }
    for (const HubPort half : leaving) {
        m_host.finishDetach(m_number, half);
        m_stays[indexOf(half)] = 0;
    }
}

bool VirtualHub::attach(const AttachedPort& port, std::string& error)
{
    if (!stays(port)) { // it has left again; there is another event for that
        return true;
    }
    m_hub->open(port); // a flash that somebody else has now is tried again at the next request
    const VirtualDevice device = {
        m_number,
        port.port,
        port.vendorId,
        port.productId,
        port.otherProductId,
        [this, port](ControlRequest& request) { return vendorRequest(port, request); },
        [this, port] { return stays(port); }};
    if (!m_host.attach(device, error)) {
        return false;
    }
    m_stays[indexOf(port.port)] = port.session;
    return true;
}

bool VirtualHub::stays(const AttachedPort& port) const
{
    const std::vector<AttachedPort> there = m_hub->attachedPorts();
    return std::any_of(there.begin(), there.end(), [&](const AttachedPort& other) {
        return other.port == port.port && other.session == port.session;
    });
}

/// The simulated hub answers who has opened it. On a real bus nobody opens a hub, so that is done
/// here, once for each stay; a hub whose flash another program has meanwhile refuses.
std::uint32_t VirtualHub::vendorRequest(const AttachedPort& port, ControlRequest& request)
{
    const std::uint32_t status = m_hub->control(port, request);
    if (status != kSimulatedNoDevice || !stays(port)) {
        return status;
    }
    return m_hub->open(port) ? m_hub->control(port, request) : kSimulatedStall;
}

} // namespace vornadel
