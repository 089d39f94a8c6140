#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace vornadel
{

/// One port, and the stay of the device there.
struct UsbPort {
    std::string path{}; ///< "2-1.4": bus, then the port of each hub on the way; may be empty
    std::uint64_t incarnation{}; ///< another number for each stay of a device there; 0: no device

    bool operator==(const UsbPort&) const = default;
};

/// Where a device is attached. A USB 3 connector has a port on each of two buses, and a hub in it
/// is a device at each of them. Known without opening the device.
struct UsbPlace {
    UsbPort own{};   ///< of the device that told its place; the path is empty if the system gives
                     ///< none
    UsbPort other{}; ///< of the same connector; the path is empty if it has one port only

    bool known() const { return !own.path.empty(); }
    /// Whether both are the same connector. False for places that are not known.
    bool isSameConnector(const UsbPlace& place) const;
    /// Whether the devices of this connector that were there when `before` was told, by either
    /// half, have all left since.
    bool hasArrivedSince(const UsbPlace& before) const;
    /// Whether this is one of the connector's ports, or both, as text() writes them.
    bool isCalled(const std::string& text) const;
    /// "2-3/1-3": the same text from either half, the higher bus first. Empty if not known.
    std::string text() const;

    bool operator==(const UsbPlace&) const = default;
};

/// The ids of one USB device.
struct UsbIds {
    std::uint16_t vendor{};
    std::uint16_t product{};

    bool operator==(const UsbIds&) const = default;
};

/// Keeps others from the hub at one place, in this process and in others. The destructor gives the
/// place back; so does the end of the process, however it ends.
class PlaceLock
{
public:
    PlaceLock() = default;
    PlaceLock(const PlaceLock&) = delete;
    PlaceLock& operator=(const PlaceLock&) = delete;
    virtual ~PlaceLock() = default;
};

/// A place that somebody has locked.
struct PlaceOwner {
    std::string place{};      ///< as UsbPlace::text() writes it
    std::int64_t processId{}; ///< 0 if the system does not tell it
    UsbIds ids{};             ///< of the device that was locked there; zero if not known
};

/// The locks of places. All members may be called from any thread.
class PlaceLocks
{
public:
    PlaceLocks() = default;
    PlaceLocks(const PlaceLocks&) = delete;
    PlaceLocks& operator=(const PlaceLocks&) = delete;
    virtual ~PlaceLocks() = default;

    /// Does not wait. Null if somebody has the place, or if it cannot be locked; `owner` is then
    /// who, as far as known. `ids` are those of the device there, for owners().
    virtual std::unique_ptr<PlaceLock> lock(const UsbPlace& place, UsbIds ids,
                                            PlaceOwner& owner) = 0;

    /// The places that are locked now, by this process or another.
    virtual std::vector<PlaceOwner> owners() = 0;
};

} // namespace vornadel
