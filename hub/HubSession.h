#pragma once

#include "platform/UsbBus.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vornadel
{

/// Keeps one flow at one hub. The first Hub_OpenDevice() of the session's thread decides on the
/// place, and locks it for this process and all others. Every later one looks for the hub there. A
/// hub that stood beside it gets no request.
///
/// One per thread at a time. Without a session, and on other threads, Hub_OpenDevice() takes the
/// first supported hub. On a platform that tells no places a session changes nothing.
class HubSession
{
public:
    struct Options {
        /// Where the hub is; not known: the first supported hub in the bus's order is taken.
        UsbPlace place = {};
        /// True: only a hub at that place will do, only with the serial number it had (or one of
        /// expect()), and only in another stay than before its restart, for which
        /// Hub_SwitchMode() waits. False: Hub_SwitchMode() sleeps its fixed pauses, and a hub
        /// elsewhere will do if it was not attached when the session began.
        bool strict = false;
        bool locks = true; ///< false: takes no lock and heeds none
    };

    explicit HubSession(Options options = {});
    HubSession(const HubSession&) = delete;
    HubSession& operator=(const HubSession&) = delete;
    ~HubSession(); ///< unlocks; close the hub before

    bool isStrict() const { return m_options.strict; }
    /// Of the hub that is open, or was open last; not known before the first open.
    const UsbPlace& place() const { return m_place; }
    /// Who has the place, after an open that found it locked.
    const PlaceOwner& owner() const { return m_owner; }

    /// The hub may come back from its next restart with these ids and this serial number.
    void expect(std::uint16_t vendorId, std::uint16_t superSpeedId, std::uint16_t highSpeedId,
                std::string serialNumber);

    // For the transport:

    /// The session of the calling thread; null if there is none.
    static HubSession* ofThisThread();
    /// Opens this session's hub. `hub` is set when it is open; otherwise the last failure is.
    UsbOpenStatus open(UsbBus& bus, std::unique_ptr<UsbDevice>& hub);
    /// From now on the stay of the open hub is over, and only the next one will do.
    void beginRestart(const UsbDevice& hub);

private:
    struct Expected {
        std::uint16_t vendorId{};
        std::uint16_t superSpeedId{};
        std::uint16_t highSpeedId{};
        std::string serialNumber{};
    };
    struct Found; // the supported hubs of one search

    bool lockPlace(UsbBus& bus, const UsbPlace& place);

    Options m_options;
    UsbPlace m_place{};
    std::string m_serialNumber{};
    std::optional<Expected> m_expected;
    std::optional<UsbPlace> m_leaving; // the place as it was before the restart under way
    std::vector<UsbPlace> m_placesAtStart{};
    bool m_begun = false;
    std::unique_ptr<PlaceLock> m_lock;
    PlaceOwner m_owner{};
};

} // namespace vornadel
