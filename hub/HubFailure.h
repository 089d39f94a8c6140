#pragma once

#include "platform/UsbBus.h"

namespace vornadel
{

/// Why an operation on the hub failed.
enum class HubFailure {
    None,
    NoHub,        ///< no supported hub is attached, or none at the chosen place
    NoAccess,     ///< the user may not open it
    Busy,         ///< another flow or program has it, or its place cannot be locked
    NotOpened,    ///< the system could not open it, for another reason
    Unplugged,    ///< it left the bus before a request was done
    Stalled,      ///< it refused a request
    Short,        ///< it moved less data than asked
    TimedOut,     ///< it did not answer a request
    NotAnswered,  ///< a request failed for another reason
    NotRestarted, ///< it confirmed a restart and stayed on the bus
    NotReturned,  ///< it left for a restart and did not come back to its place
    AnotherHub,   ///< it left for a restart, and a hub with another serial number took its place
    NoRomCode,    ///< it came back, but does not run its ROM code
    NoFlashCode,  ///< it came back, but runs its ROM code instead of its firmware
    OtherVersion, ///< it came back with another firmware version than the image's
    Abandoned,    ///< this program is ending
};

/// Why the calling thread's last failed operation on the hub failed; None if none has failed yet.
HubFailure Hub_LastFailure();

// For the functions of this room:

void setLastFailure(HubFailure failure);
/// Opens a device. If that fails, sets the last failure and returns false.
bool openOrSetFailure(UsbDevice& device);

} // namespace vornadel
