#include "hub/HubSession.h"

#include "base/LastError.h"
#include "hub/HubFailure.h"
#include "hub/HubSearch.h"

#include <algorithm>
#include <utility>

namespace vornadel
{

namespace
{

thread_local HubSession* current = nullptr;

} // namespace

HubSession::HubSession(Options options) : m_options(std::move(options)), m_place(m_options.place)
{
    current = this;
}

void HubSession::end()
{
    if (current == this) {
        current = nullptr;
    }
    m_lock.reset();
}

HubSession* HubSession::ofThisThread() { return current; }

std::unique_ptr<UsbDevice> HubSession::open(UsbSearch& search, PlaceLocks& locks)
{
    Devices devices;
    std::optional<int> error; // of the devices before the first supported one
    while (std::unique_ptr<UsbDevice> device = nextSupportedDevice(search)) {
        devices.push_back(std::move(device));
        error = error.value_or(LastError);
    }
    LastError = error.value_or(LastError);
    if (!std::exchange(m_hasBegun, true)) {
        for (const auto& device : devices) {
            m_seenAtStart.push_back({device->place(), device->texts().serialNumber});
        }
    }
    std::unique_ptr<UsbDevice> hub = choose(devices);
    if (hub == nullptr) {
        return nullptr;
    }
    const UsbPlace place = hub->place();
    m_isTaken = !lockPlace(locks, *hub);
    if (m_isTaken) {
        setLastFailure(HubFailure::Busy);
        return nullptr;
    }
    if (!openOrSetFailure(*hub)) {
        return nullptr;
    }
    m_place = place;
    m_leaving.reset();
    if (const std::string text = hub->texts().serialNumber; !text.empty()) {
        m_serialNumber = text;
    }
    return hub;
}

void HubSession::beginRestart(const UsbDevice& hub)
{
    m_leaving = hub.place();
    m_hasRestarted = true;
}

/// The device to open. If there is none, the last failure is set.
std::unique_ptr<UsbDevice> HubSession::choose(Devices& devices)
{
    if (m_place.known()) {
        return m_options.strict ? chooseStrictly(devices) : chooseAnywhere(devices);
    }
    if (devices.empty()) {
        setLastFailure(HubFailure::NoHub);
        return nullptr;
    }
    return std::move(devices.front());
}

std::unique_ptr<UsbDevice> HubSession::chooseStrictly(Devices& devices)
{
    setLastFailure(m_leaving ? HubFailure::NotReturned : HubFailure::NoHub);
    for (auto& device : devices) {
        const UsbPlace place = device->place();
        if (!place.isSameConnector(m_place)) {
            continue;
        }
        if (m_leaving && !place.hasArrivedSince(*m_leaving)) {
            setLastFailure(HubFailure::NotRestarted);
        } else if (!mayHaveSerialNumber(device->texts().serialNumber) ||
                   mayComeFromElsewhere(*device, devices)) {
            setLastFailure(HubFailure::AnotherHub);
        } else {
            return std::move(device);
        }
    }
    return nullptr;
}

std::unique_ptr<UsbDevice> HubSession::chooseAnywhere(Devices& devices)
{
    const auto isHere = [&](const auto& device) {
        return device->place().isSameConnector(m_place) && !mayComeFromElsewhere(*device, devices);
    };
    const auto isNew = [&](const auto& device) {
        const UsbPlace place = device->place();
        return std::none_of(
                   m_seenAtStart.begin(), m_seenAtStart.end(),
                   [&](const Seen& before) { return before.place.isSameConnector(place); }) &&
               !mayComeFromElsewhere(*device, devices);
    };
    auto found = std::find_if(devices.begin(), devices.end(), isHere);
    if (found == devices.end()) {
        found = std::find_if(devices.begin(), devices.end(), isNew);
    }
    if (found == devices.end()) {
        setLastFailure(m_leaving ? HubFailure::NotReturned : HubFailure::NoHub);
        return nullptr;
    }
    return std::move(*found);
}

bool HubSession::mayHaveSerialNumber(const std::string& text) const
{
    return text.empty() || m_serialNumber.empty() || text == m_serialNumber || !m_expected ||
           text == *m_expected;
}

/// Whether this hub came back with a new serial number, which another hub had when the session
/// began, and that other hub is no longer at its place.
bool HubSession::mayComeFromElsewhere(const UsbDevice& hub, const Devices& devices) const
{
    const std::string text = hub.texts().serialNumber;
    const auto isThere = [&](const Seen& seen) {
        return std::any_of(devices.begin(), devices.end(), [&](const auto& device) {
            return device->place().isSameConnector(seen.place) &&
                   device->texts().serialNumber == text;
        });
    };
    return m_hasRestarted && !text.empty() && text != m_serialNumber &&
           std::any_of(m_seenAtStart.begin(), m_seenAtStart.end(), [&](const Seen& seen) {
               return seen.serialNumber == text && !seen.place.isSameConnector(m_place) &&
                      !isThere(seen);
           });
}

/// Locks the place unless this session has it already.
bool HubSession::lockPlace(PlaceLocks& locks, const UsbDevice& hub)
{
    const UsbPlace place = hub.place();
    if (!m_options.locks || !place.known() || m_lockedPlace.isSameConnector(place)) {
        return true;
    }
    std::unique_ptr<PlaceLock> lock = locks.lock(place, {hub.vendorId(), hub.productId()}, m_owner);
    if (lock == nullptr) {
        return false;
    }
    m_lock = std::move(lock);
    m_lockedPlace = place;
    return true;
}

} // namespace vornadel
