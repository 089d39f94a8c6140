#pragma once

#include "platform/Clock.h"
#include "platform/UsbBus.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vornadel
{

/// Which hub a flow works on, and how strictly.
struct HubSessionOptions {
    /// Where the hub is; not known: the first supported hub in the bus's order is taken.
    UsbPlace place = {};
    /// True: only a hub at that place will do, only with the serial number that it had or may have
    /// by now, and only in another stay than before its restart, for which Hub_SwitchMode() waits.
    /// False: Hub_SwitchMode() sleeps its fixed pauses, and a hub elsewhere will do if it was not
    /// attached when the session began.
    bool strict = false;
    bool locks = true; ///< false: takes no lock and heeds none
};

/// Keeps one flow at one hub. The first Hub_OpenDevice() of the session's thread decides on the
/// place, and locks it for this process and all others. Every later one looks for the hub there. A
/// hub that stood beside it gets no request.
///
/// One per thread at a time. Without a session, and on other threads, Hub_OpenDevice() takes the
/// first supported hub. On a platform that tells no places a session changes nothing.
class HubSession
{
public:
    using Options = HubSessionOptions;

    explicit HubSession(Options options = {});
    HubSession(const HubSession&) = delete;
    HubSession& operator=(const HubSession&) = delete;
    ~HubSession() { end(); }

    /// Unlocks the place; from now on the thread has no session. Close the hub before.
    void end();

    /// Called about once a second while Hub_AwaitDevice() waits, with the time waited so far.
    std::function<void(Clock::Duration sofar)> onWaiting;

    bool isStrict() const { return m_options.strict; }
    /// Of the hub that is open, or was open last; not known before the first open.
    const UsbPlace& place() const { return m_place; }
    /// Whether the last open found the place locked by someone else.
    bool isTaken() const { return m_isTaken; }
    /// Who has the place, if it is taken.
    const PlaceOwner& owner() const { return m_owner; }

    /// The last that the hub told; empty if it told none.
    const std::string& serialNumber() const { return m_serialNumber; }

    /// Whether a restart of the hub has been asked for.
    bool hasRestarted() const { return m_hasRestarted; }

    /// The hub may come back with this serial number, because its new firmware says so.
    void expectSerialNumber(std::string text) { m_expected = {std::move(text)}; }
    /// The hub may come back with any serial number, because the flash that said it is blank.
    void expectAnySerialNumber() { m_expected = {}; }

    /// The next open may find the hub as it was before its restart, too.
    void expectNoRestart() { m_leaving.reset(); }

    // For the transport:

    /// The session of the calling thread; null if there is none.
    static HubSession* ofThisThread();
    /// Opens this session's hub out of a search from its beginning. Null: the last failure is set.
    std::unique_ptr<UsbDevice> open(UsbSearch& search, PlaceLocks& locks);
    /// From now on the stay of the open hub is over, and only the next one will do.
    void beginRestart(const UsbDevice& hub);

private:
    using Devices = std::vector<std::unique_ptr<UsbDevice>>;

    std::unique_ptr<UsbDevice> choose(Devices& devices);
    std::unique_ptr<UsbDevice> chooseStrictly(Devices& devices);
    std::unique_ptr<UsbDevice> chooseAnywhere(Devices& devices);
    bool mayHaveSerialNumber(const std::string& text) const;
    bool mayComeFromElsewhere(const UsbDevice& hub, const Devices& devices) const;
    bool lockPlace(PlaceLocks& locks, const UsbDevice& hub);

    struct Seen {
        UsbPlace place{};
        std::string serialNumber{};
    };

    Options m_options;
    std::vector<Seen> m_seenAtStart{}; // the halves of the supported hubs
    bool m_hasBegun = false;           // those are known
    UsbPlace m_place{};
    std::string m_serialNumber{};
    std::optional<std::string> m_expected{""}; // another serial number for it; none: any
    std::optional<UsbPlace> m_leaving;         // as it was before the restart under way
    bool m_hasRestarted = false;
    UsbPlace m_lockedPlace{};
    std::unique_ptr<PlaceLock> m_lock;
    bool m_isTaken = false;
    PlaceOwner m_owner{};
};

} // namespace vornadel
