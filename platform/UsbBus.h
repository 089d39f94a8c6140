#pragma once

#include "platform/UsbPlace.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace vornadel
{

/// One control transfer on the default pipe. The fields of the USB setup packet are native words
/// here; the back end puts them on the wire little-endian. A data stage has at most 65535 bytes.
struct ControlRequest {
    std::uint8_t bmRequestType = 0; ///< bit 7 set: the device sends the data stage
    std::uint8_t bRequest = 0;
    std::uint16_t wValue = 0;
    std::uint16_t wIndex = 0;
    std::span<const std::uint8_t> out{}; ///< data stage to the device
    std::span<std::uint8_t> in{};        ///< room for the data stage from the device
    /// Ends the transfer after that time; 0: the platform's own limit. macOS knows only its own.
    std::chrono::milliseconds limit{0};
    std::uint32_t transferred = 0; ///< bytes moved in the data stage, set by the back end

    bool fromDevice() const { return (bmRequestType & 0x80) != 0; }
    std::uint16_t wLength() const
    {
        return static_cast<std::uint16_t>(fromDevice() ? in.size() : out.size());
    }
};

/// How the open of a device ended.
enum class UsbOpenStatus {
    Opened,
    NoAccess, ///< the user lacks the permission
    Busy,     ///< another party holds the device
    Gone,     ///< the device has left the bus
    Other     ///< the platform failed for another reason
};

/// Why a control transfer failed.
enum class UsbFailure {
    Stalled, ///< the device refused the request
    Short,   ///< the data stage ended early
    Gone,    ///< the device has left the bus
    TimedOut,
    Other
};

/// What a device says of itself in its descriptors, in UTF-8 without control characters. Empty: it
/// says nothing.
struct UsbTexts {
    std::string product{};
    std::string serialNumber{};
};

/// One attached USB device, as the platform lists it. Not thread-safe: one owner, one call at a
/// time. Destroying an open device closes it.
class UsbDevice
{
public:
    UsbDevice() = default;
    UsbDevice(const UsbDevice&) = delete;
    UsbDevice& operator=(const UsbDevice&) = delete;
    virtual ~UsbDevice() = default;

    /// idVendor, known without opening; 0 if it cannot be read
    virtual std::uint16_t vendorId() const = 0;
    /// idProduct, known without opening; 0 if it cannot be read
    virtual std::uint16_t productId() const = 0;

    /// Known without opening.
    virtual UsbPlace place() const = 0;
    /// Known without opening.
    virtual UsbTexts texts() const = 0;
    /// The Container ID as "{8-4-4-4-12}" with lower-case hex digits; empty if there is none, or if
    /// it cannot be read. Where the system does not keep it, this asks the device, which needs the
    /// rights of an open.
    virtual std::string containerId() = 0;
    /// What hangs below this device and would be disconnected with it: a disk, a keyboard, a
    /// network interface, one text each. Known without opening; empty where the system cannot tell.
    virtual std::vector<std::string> attachedBelow() const = 0;

    /// Exclusive open. Must not be called on a device object that is already open.
    virtual UsbOpenStatus open() = 0;

    /// One synchronous control transfer on an open device. Returns 0 on success: on Linux only if
    /// the whole data stage moved, on macOS also for a short read. Any other value is the
    /// platform's status code. Blocks until the transfer ends or times out.
    virtual std::uint32_t control(ControlRequest& request) = 0;

    /// What a status of control() other than 0 means.
    virtual UsbFailure failureOf(std::uint32_t status) const = 0;

    /// Closes the device. No effect if it is not open.
    virtual void close() = 0;
};

/// Goes through the devices that were attached when the search began, in the platform's order.
///
/// release() frees the platform's list. Without it, the Linux back end frees it at the end of the
/// search, and the macOS back end never does. Devices already handed out stay usable either way.
class UsbSearch
{
public:
    /// The result of one step.
    enum class Step {
        Device,      ///< `device` is set
        NoPlugIn,    ///< a device, but the platform has no plug-in for it
        NoInterface, ///< a plug-in, but without the device interface
        End          ///< no further device
    };

    UsbSearch() = default;
    UsbSearch(const UsbSearch&) = delete;
    UsbSearch& operator=(const UsbSearch&) = delete;
    virtual ~UsbSearch() = default;

    /// Goes to the next device. Sets `device` for Step::Device and clears it otherwise.
    virtual Step next(std::unique_ptr<UsbDevice>& device) = 0;
    virtual void release() = 0; ///< frees the list; afterwards next() returns End
};

enum class UsbEvent { Attached, Detached };

/// The platform's USB: listing, opening, watching. search() may be called from any thread.
class UsbBus
{
public:
    /// Called when devices come or go: on macOS by the run loop of the thread that called watch(),
    /// elsewhere on a thread of the back end. Must only post and return. One arrival may be
    /// reported twice; several at once may be reported together.
    using Listener = std::function<void(UsbEvent)>;

    UsbBus() = default;
    UsbBus(const UsbBus&) = delete;
    UsbBus& operator=(const UsbBus&) = delete;
    virtual ~UsbBus() = default;

    /// Begins a search through the attached devices; null if the platform gives no list.
    virtual std::unique_ptr<UsbSearch> search() = 0;

    /// Reports every attach and detach from now on, but not the devices already attached. One
    /// listener per bus. False if the platform can neither notify nor be polled.
    virtual bool watch(Listener listener) = 0;

    /// Ends the watch. After it returns, the listener is neither running nor called again. Must not
    /// be called from the listener.
    virtual void unwatch() = 0;

    /// The locks of this bus's places; they live as long as the bus.
    virtual PlaceLocks& placeLocks() = 0;
};

} // namespace vornadel
