#include "hub/HubTransport.h"

#include "base/LastError.h"
#include "hub/SupportedIds.h"
#include "hub/VendorRequests.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace vornadel
{

namespace
{

constexpr int kNoDeviceList = 2;
constexpr int kNoPlugIn = 3;
constexpr int kNoInterface = 4;
constexpr int kNoHubOpened = 5;

struct Transport {
    std::atomic<UsbBus*> bus{nullptr};
    std::atomic<Clock*> clock{nullptr};
    std::atomic<bool> abandoned{false};

    std::mutex mutex; // guards what follows; not held during calls of the bus
    std::unique_ptr<UsbDevice> HubDevice;
    bool claimed = false;  // from the beginning of an open to the end of the close
    std::thread::id owner; // of the claim
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
    if (self.claimed && self.owner != std::this_thread::get_id()) {
        return false;
    }
    self.claimed = true;
    self.owner = std::this_thread::get_id();
    return true;
}

// Ends the claim unless a hub is open under it.
void endClaim()
{
    Transport& self = transport();
    const std::lock_guard lock(self.mutex);
    self.claimed = self.HubDevice != nullptr;
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
    return self.claimed && self.owner == std::this_thread::get_id() ? self.HubDevice.get()
                                                                    : nullptr;
}

std::unique_ptr<UsbDevice> takeOwnHub()
{
    Transport& self = transport();
    const std::lock_guard lock(self.mutex);
    if (!self.claimed || self.owner != std::this_thread::get_id()) {
        return nullptr;
    }
    return std::move(self.HubDevice);
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

// The next supported hub of the search, or null at its end.
std::unique_ptr<UsbDevice> nextSupported(UsbSearch& search)
{
    for (;;) {
        std::unique_ptr<UsbDevice> device;
        switch (search.next(device)) {
        case UsbSearch::Step::NoPlugIn:
            LastError = kNoPlugIn;
            break;
        case UsbSearch::Step::NoInterface:
            LastError = kNoInterface;
            break;
        case UsbSearch::Step::Device: {
            const std::uint16_t vendorId = device->vendorId();
            const std::uint16_t productId = device->productId();
            if (FindSupportedId(vendorId, productId)) {
                return device;
            }
            break;
        }
        case UsbSearch::Step::End:
            return nullptr;
        }
    }
}

thread_local UsbOpenStatus lastOpenStatus = UsbOpenStatus::Other;

// Opens the first supported hub. `hub` is set when it is open; otherwise LastError is.
UsbOpenStatus openFirstSupported(std::unique_ptr<UsbDevice>& hub)
{
    const std::unique_ptr<UsbSearch> search = beginSearch();
    if (search == nullptr) {
        return UsbOpenStatus::Other;
    }
    std::unique_ptr<UsbDevice> found = nextSupported(*search);
    UsbOpenStatus status = UsbOpenStatus::Gone;
    if (transport().abandoned) {
        status = UsbOpenStatus::Other;
    } else if (found != nullptr) {
        status = found->open();
    }
    if (status == UsbOpenStatus::Opened) {
        hub = std::move(found);
    } else {
        LastError = kNoHubOpened;
    }
    return status;
}

} // namespace

void Hub_UsePlatform(UsbBus& bus, Clock& clock)
{
    Transport& self = transport();
    const std::lock_guard lock(self.mutex);
    if (self.claimed) {
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
    const bool found = nextSupported(*search) != nullptr;
    search->release();
    return found;
}

bool Hub_OpenDevice()
{
    if (transport().abandoned || !claim()) {
        lastOpenStatus = transport().abandoned ? UsbOpenStatus::Other : UsbOpenStatus::Busy;
        LastError = kNoHubOpened;
        return false;
    }
    std::unique_ptr<UsbDevice> hub;
    lastOpenStatus = openFirstSupported(hub);
    if (hub == nullptr) {
        endClaim();
        return false;
    }
    store(std::move(hub));
    ControlRequest openTime = vendorRequest(VendorCommand::OpenTime);
    if (HubMakerVid != 0) {
        openTime.wIndex = HubMakerVid;
    }
    Hub_ControlRequest(openTime);
    return true;
}

UsbOpenStatus Hub_LastOpenStatus() { return lastOpenStatus; }

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
        return kHubAbandoned;
    }
    return hub->control(request);
}

void Hub_Pause(Clock::Duration pause)
{
    if (Clock* const clock = transport().clock) {
        clock->sleep(pause);
    }
}

void Hub_Abandon() { transport().abandoned = true; }

} // namespace vornadel
