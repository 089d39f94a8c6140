#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>

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
    std::uint32_t transferred = 0;       ///< bytes moved in the data stage, set by the back end

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

/// One attached USB device, as the platform lists it. Not thread-safe: one owner, one call at a
/// time. Destroying an open device gives it back to the platform as close() does.
class UsbDevice
{
public:
    UsbDevice() = default;
    UsbDevice(const UsbDevice&) = delete;
    UsbDevice& operator=(const UsbDevice&) = delete;
    virtual ~UsbDevice() = default;

    virtual std::uint16_t vendorId() const = 0;  ///< idVendor, known without opening; 0 when it
                                                 ///< cannot be read
    virtual std::uint16_t productId() const = 0; ///< idProduct, known without opening; 0 when it
                                                 ///< cannot be read

    /// Exclusive open. Not to be called on a device object that is open already.
    virtual UsbOpenStatus open() = 0;

    /// One synchronous control transfer on an open device. 0 when it went well, which on Linux
    /// means that the whole data stage moved (macOS also counts a read that ended early); any other
    /// value is the platform's status code. Blocks until the transfer ends or the back end's
    /// time-out is over.
    virtual std::uint32_t control(ControlRequest& request) = 0;

    /// Gives the device back. Harmless when it is not open.
    virtual void close() = 0;
};

/// A walk over the devices that were attached when the search began, in the platform's enumeration
/// order.
///
/// release() gives the platform's list back. Without it, Linux's back end gives it back at the end
/// of the search, and macOS's leaves it with the system. Devices already handed out stay usable
/// either way.
class UsbSearch
{
public:
    /// What one step of the walk met.
    enum class Step {
        Device,      ///< `device` is set
        NoPlugIn,    ///< a device is there, but the platform gives no way to talk to it
        NoInterface, ///< the way is there, but it does not offer the device interface
        End          ///< no further device
    };

    UsbSearch() = default;
    UsbSearch(const UsbSearch&) = delete;
    UsbSearch& operator=(const UsbSearch&) = delete;
    virtual ~UsbSearch() = default;

    /// Goes one device further. Sets `device` for Step::Device and empties it otherwise.
    virtual Step next(std::unique_ptr<UsbDevice>& device) = 0;
    virtual void release() = 0; ///< gives the list back; next() answers End afterwards
};

enum class UsbEvent { Attached, Detached };

/// The platform's USB: listing, opening, watching. search() may be called from any thread.
class UsbBus
{
public:
    /// Called when devices come or go: on macOS on the thread that called watch(), by its run loop,
    /// elsewhere on a thread of the back end's. Must only post and return. One arrival may be
    /// reported twice; several at once may be reported together.
    using Listener = std::function<void(UsbEvent)>;

    UsbBus() = default;
    UsbBus(const UsbBus&) = delete;
    UsbBus& operator=(const UsbBus&) = delete;
    virtual ~UsbBus() = default;

    /// Begins a walk over the attached devices; null when the platform gives no list.
    virtual std::unique_ptr<UsbSearch> search() = 0;

    /// Reports every attach and detach from now on; what is attached already is not reported. One
    /// listener per bus. False when the platform can neither notify nor be polled.
    virtual bool watch(Listener listener) = 0;

    /// Ends the watch. After the return the listener is neither running nor called again.
    /// Not to be called from the listener.
    virtual void unwatch() = 0;
};

} // namespace vornadel
