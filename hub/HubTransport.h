#pragma once

#include "platform/Clock.h"
#include "platform/UsbBus.h"

#include <cstdint>

namespace vornadel
{

// The road to the hub: one process-wide open device, found by its ids.
//
// All functions block and may be called from any thread. The open hub belongs to the thread that
// opened it, from the beginning of the open to the end of the close. Meanwhile every other thread
// meets a busy device: its open fails with LastError 5, its close does nothing, its requests answer
// kHubNotOpen. The owner closes on every path.

/// Status of a request when the calling thread has no hub open.
inline constexpr std::uint32_t kHubNotOpen = 0xE00002F0;
/// Status of a request after Hub_Abandon().
inline constexpr std::uint32_t kHubAbandoned = 0xE00002EB;

/// Hands over the bus and the clock to work with; both must outlive the last call of this room.
/// Once at start. A later call replaces them and takes Hub_Abandon() back, unless a hub is open:
/// then it changes nothing.
void Hub_UsePlatform(UsbBus& bus, Clock& clock);

/// Whether a supported hub is attached. Opens nothing and is not held up by an open hub. Sets
/// LastError 2 when there is no device list, 3 or 4 for a device that gave no access; leaves it
/// alone when nothing matches.
bool Hub_FindDevice();

/// Opens the first supported hub in the bus's order and sends it the open-time request, whose
/// status does not count. No second hub is tried. LastError: 2 without a device list; 5 when no
/// supported hub is there, it cannot be opened, another thread has it, or the program is ending. A
/// second open without a close in between puts the new device in the place of the old one, which
/// stays open and unused until the process ends.
bool Hub_OpenDevice();

/// How the calling thread's last Hub_OpenDevice() ended. Gone also when no supported hub was there,
/// Busy also when another thread had it, Other also without a device list and after Hub_Abandon().
UsbOpenStatus Hub_LastOpenStatus();

/// Closes the hub that the calling thread opened; does nothing otherwise.
void Hub_CloseDevice();

/// Whether a hub is open, by whichever thread.
bool Hub_IsOpen();

/// One control transfer on the open hub. 0 is success, kHubNotOpen and kHubAbandoned never reached
/// the bus, any other value is the platform's. No retry, no time-out of its own, no LastError.
std::uint32_t Hub_ControlRequest(ControlRequest request);

/// Sleeps on the platform's clock.
void Hub_Pause(Clock::Duration pause);

/// The program is ending: from now on every open fails and every request answers kHubAbandoned. A
/// transfer in flight ends by itself; closing still works. Together with Clock::interrupt() this
/// sends every flow down its own failure path at once.
void Hub_Abandon();

} // namespace vornadel
