#include "standins/virtual_hub/VirtualHub.h"

#include <algorithm>
#include <system_error>
#include <utility>
#include <vector>

namespace vornadel
{

namespace
{

std::size_t indexOf(HubSpeed speed) { return static_cast<std::size_t>(speed); }

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
    detach([](HubSpeed) { return true; });
}

bool VirtualHub::start(std::string& error)
{
    for (const AttachedHalf& half : m_hub->attachedHalves()) {
        if (m_hub->open(half) != UsbOpenStatus::Opened) {
            error = "the flash file of hub " + std::to_string(m_number) +
                    " is in use by another hub or program; choose another file with image=FILE";
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
        error = "cannot start a thread for hub " + std::to_string(m_number) + ": " + problem.what();
        return false;
    }
    return true;
}

void VirtualHub::waitUntilShown()
{
    std::unique_lock lock(m_mutex);
    m_behind = true; // the hub's own event may still be pending
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

/// Brings the bus up to date with the hub: first detaches what has left, then attaches what has
/// come, in order.
bool VirtualHub::catchUp(std::string& error)
{
    const std::vector<AttachedHalf> there = m_hub->attachedHalves();
    detach([&](HubSpeed speed) {
        return std::none_of(there.begin(), there.end(), [&](const AttachedHalf& half) {
            return half.speed == speed && half.session == m_stays[indexOf(speed)];
        });
    });
    return std::all_of(there.begin(), there.end(), [&](const AttachedHalf& half) {
        return half.session == m_stays[indexOf(half.speed)] || attach(half, error);
    });
}

void VirtualHub::detach(const std::function<bool(HubSpeed)>& leaves)
{
    std::vector<HubSpeed> leaving;
    for (const HubSpeed half : {HubSpeed::SuperSpeed, HubSpeed::HighSpeed}) {
        if (m_stays[indexOf(half)] != 0 && leaves(half)) {
            leaving.push_back(half);
            m_host.beginDetach(m_number, half);
        }
    }
    for (const HubSpeed half : leaving) {
        m_host.finishDetach(m_number, half);
        m_stays[indexOf(half)] = 0;
    }
}

bool VirtualHub::attach(const AttachedHalf& half, std::string& error)
{
    if (!stays(half)) { // it has left again; another event will handle that
        return true;
    }
    m_hub->open(half); // if another program has the flash, the next request tries again
    const VirtualDevice device = {
        m_number,
        half.speed,
        half.vendorId,
        half.productId,
        half.otherProductId,
        half.place,
        half.texts.serialNumber.empty() ? "VIRTUAL" + std::to_string(m_number)
                                        : half.texts.serialNumber,
        [this, half](ControlRequest& request) { return vendorRequest(half, request); },
        [this, half] { return stays(half); }};
    if (!m_host.attach(device, error)) {
        return false;
    }
    m_stays[indexOf(half.speed)] = half.session;
    return true;
}

bool VirtualHub::stays(const AttachedHalf& half) const
{
    const std::vector<AttachedHalf> there = m_hub->attachedHalves();
    return std::any_of(there.begin(), there.end(), [&](const AttachedHalf& other) {
        return other.speed == half.speed && other.session == half.session;
    });
}

/// The simulated hub answers only after an open. On a real bus nobody opens a hub, so it is opened
/// here, once per session. If another program has its flash by now, the hub refuses the request.
std::uint32_t VirtualHub::vendorRequest(const AttachedHalf& half, ControlRequest& request)
{
    const std::uint32_t status = m_hub->control(half, request);
    if (status != kSimulatedNoDevice || !stays(half)) {
        return status;
    }
    return m_hub->open(half) == UsbOpenStatus::Opened ? m_hub->control(half, request)
                                                      : kSimulatedStall;
}

} // namespace vornadel
