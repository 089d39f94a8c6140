#include "hub/HubTransport.h"

#include "base/LastError.h"
#include "hub/BusEvents.h"
#include "hub/HubFailure.h"
#include "hub/HubSearch.h"
#include "hub/HubSession.h"
#include "hub/SupportedIds.h"
#include "hub/VendorRequests.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

namespace vornadel
{

namespace
{

constexpr int kNoDeviceList = 2;
constexpr int kNoHubOpened = 5;

// Between two opens of a hub that is there and refuses.
constexpr Clock::Duration kRetryPause = std::chrono::milliseconds(50);
// What a request has left when the time of an open is over; without any it would not be sent.
constexpr Clock::Duration kLeastLimit = std::chrono::milliseconds(100);
// Between two looks for an absent hub without an event: on macOS the events need the thread that
// sleeps.
constexpr Clock::Duration kLookPause = std::chrono::seconds(1);

struct Transport {
    std::atomic<UsbBus*> bus{nullptr};
    std::atomic<Clock*> clock{nullptr};
    std::atomic<bool> abandoned{};
    std::function<void(const ControlRequest&, std::uint32_t)> observer;
    std::optional<Clock::Duration> requestsEnd; // of this open; only the owner uses it

    std::mutex mutex; // guards what follows; not held during calls of the bus
    std::unique_ptr<UsbDevice> HubDevice;
    std::thread::id owner; // from the beginning of an open to the end of the close; none otherwise
    std::vector<std::unique_ptr<UsbDevice>> overwritten;
};

// Never destroyed: a flow may be in a transfer when main() returns, and the devices in here may
// outlive the bus that they came from.
Transport& transport()
{
    static Transport& instance = *new Transport;
    return instance;
}

bool claim()
{
    Transport& self = transport();
    const std::lock_guard lock(self.mutex);
    if (self.owner != std::thread::id() && self.owner != std::this_thread::get_id()) {
        return false;
    }
    self.owner = std::this_thread::get_id();
    return true;
}

// Ends the claim unless a hub is open under it.
void endClaim()
{
    Transport& self = transport();
    const std::lock_guard lock(self.mutex);
    if (self.HubDevice == nullptr) {
        self.owner = {};
    }
}

void store(std::unique_ptr<UsbDevice> hub)
{
    Transport& self = transport();
    const std::lock_guard lock(self.mutex);
    if (self.HubDevice != nullptr) {
        self.overwritten.push_back(std::move(self.HubDevice));
    }
    self.HubDevice = std::move(hub);
}

// The open hub, if the calling thread owns it; it stays valid until that thread closes it.
UsbDevice* ownHub()
{
    Transport& self = transport();
    const std::lock_guard lock(self.mutex);
    return self.owner == std::this_thread::get_id() ? self.HubDevice.get() : nullptr;
}

std::unique_ptr<UsbDevice> takeOwnHub()
{
    Transport& self = transport();
    const std::lock_guard lock(self.mutex);
    return self.owner == std::this_thread::get_id() ? std::move(self.HubDevice) : nullptr;
}

std::unique_ptr<UsbSearch> beginSearch()
{
    UsbBus* const bus = transport().bus;
    std::unique_ptr<UsbSearch> search = bus != nullptr ? bus->search() : nullptr;
    if (search == nullptr) {
        LastError = kNoDeviceList;
    }
    return search;
}

std::unique_ptr<UsbDevice> openFirstSupported(UsbSearch& search)
{
    std::unique_ptr<UsbDevice> hub = nextSupportedDevice(search);
    if (hub == nullptr) {
        setLastFailure(HubFailure::NoHub);
    } else if (!openOrSetFailure(*hub)) {
        return nullptr;
    }
    return hub;
}

// Opens the session's hub, or the first supported one. Null: LastError and the last failure are
// set.
std::unique_ptr<UsbDevice> openHub()
{
    const std::unique_ptr<UsbSearch> search = beginSearch();
    if (search == nullptr) {
        setLastFailure(HubFailure::NotOpened);
        return nullptr;
    }
    std::unique_ptr<UsbDevice> hub;
    if (transport().abandoned) {
        setLastFailure(HubFailure::Abandoned);
    } else if (HubSession* const session = HubSession::ofThisThread()) {
        hub = session->open(*search, transport().bus.load()->placeLocks());
    } else {
        hub = openFirstSupported(*search);
    }
    if (hub == nullptr) {
        LastError = kNoHubOpened;
    }
    return hub;
}

// Whether the hub was there at the last open, but could not be opened.
bool isRefused(HubFailure failure)
{
    return failure == HubFailure::NoAccess || failure == HubFailure::Busy ||
           failure == HubFailure::NotOpened;
}

HubFailure meaningOf(UsbFailure failure)
{
    switch (failure) {
    case UsbFailure::Stalled:
        return HubFailure::Stalled;
    case UsbFailure::Short:
        return HubFailure::Short;
    case UsbFailure::Gone:
        return HubFailure::Unplugged;
    case UsbFailure::TimedOut:
        return HubFailure::TimedOut;
    case UsbFailure::Other:
        break;
    }
    return HubFailure::NotAnswered;
}

} // namespace

void Hub_UsePlatform(UsbBus& bus, Clock& clock)
{
    Transport& self = transport();
    const std::lock_guard lock(self.mutex);
    if (self.owner != std::thread::id()) {
        return;
    }
    self.bus = &bus;
    self.clock = &clock;
    self.abandoned = false;
}

bool Hub_FindDevice()
{
    const std::unique_ptr<UsbSearch> search = beginSearch();
    if (search == nullptr) {
        return false;
    }
    const bool found = nextSupportedDevice(*search) != nullptr;
    search->release();
    return found;
}

bool Hub_OpenDevice(std::optional<Clock::Duration> limit)
{
    if (transport().abandoned || !claim()) {
        setLastFailure(transport().abandoned ? HubFailure::Abandoned : HubFailure::Busy);
        LastError = kNoHubOpened;
        return false;
    }
    std::unique_ptr<UsbDevice> hub = openHub();
    if (hub == nullptr) {
        endClaim();
        return false;
    }
    store(std::move(hub));
    transport().requestsEnd.reset();
    if (limit) {
        transport().requestsEnd = transport().clock.load()->now() + *limit;
    }
    ControlRequest openTime = vendorRequest(VendorCommand::OpenTime);
    if (HubMakerVid != 0) {
        openTime.wIndex = HubMakerVid;
    }
    Hub_ControlRequest(openTime);
    return true;
}

void Hub_CloseDevice()
{
    if (std::unique_ptr<UsbDevice> hub = takeOwnHub()) {
        hub->close();
        hub.reset();
        endClaim();
    }
}

bool Hub_IsOpen()
{
    Transport& self = transport();
    const std::lock_guard lock(self.mutex);
    return self.HubDevice != nullptr;
}

std::uint32_t Hub_ControlRequest(ControlRequest request)
{
    UsbDevice* const hub = ownHub();
    if (hub == nullptr) {
        return kHubNotOpen;
    }
    if (transport().abandoned) {
        setLastFailure(HubFailure::Abandoned);
        return kHubAbandoned;
    }
    if (const auto end = transport().requestsEnd) {
        request.limit = std::chrono::ceil<std::chrono::milliseconds>(
            std::max(*end - transport().clock.load()->now(), kLeastLimit));
    }
    const std::uint32_t status = hub->control(request);
    if (status != 0) {
        setLastFailure(meaningOf(hub->failureOf(status)));
    }
    if (transport().observer) {
        transport().observer(request, status);
    }
    return status;
}

void Hub_ObserveRequests(std::function<void(const ControlRequest&, std::uint32_t status)> observer)
{
    transport().observer = std::move(observer);
}

void Hub_BeginRestart()
{
    HubSession* const session = HubSession::ofThisThread();
    const UsbDevice* const hub = ownHub();
    if (session != nullptr && hub != nullptr) {
        session->beginRestart(*hub);
    }
}

bool Hub_AwaitDevice(Clock::Duration limit, bool isForRestart)
{
    const HubSession& session = *HubSession::ofThisThread();
    Clock& clock = *transport().clock;
    const BusEvents events(*transport().bus, clock);
    const Clock::Duration begin = clock.now();
    const Clock::Duration end = begin + limit;
    Clock::Duration nextWord = begin + kLookPause;
    for (;;) {
        const unsigned seen = events.count();
        if (Hub_OpenDevice()) {
            return true;
        }
        const HubFailure failure = Hub_LastFailure();
        const Clock::Duration now = clock.now();
        const bool mayChange = isForRestart || failure == HubFailure::Busy;
        if (transport().abandoned || now >= end || session.isTaken() || !mayChange) {
            return false;
        }
        if (session.onWaiting && now >= nextWord) {
            nextWord = now + kLookPause;
            session.onWaiting(now - begin);
        }
        const bool comesWithAnEvent = !isRefused(failure) && events.areReported();
        clock.sleepUntil([&] { return events.count() != seen; },
                         std::min(end - now, comesWithAnEvent ? kLookPause : kRetryPause));
    }
}

void Hub_Pause(Clock::Duration pause)
{
    if (Clock* const clock = transport().clock) {
        clock->sleep(pause);
    }
}

void Hub_Abandon() { transport().abandoned = true; }

bool Hub_IsAbandoned() { return transport().abandoned; }

} // namespace vornadel
