#pragma once

#include "platform/Clock.h"
#include "platform/UsbBus.h"

#include <cstdint>
#include <functional>
#include <optional>

namespace vornadel
{

// Access to the hub: one process-wide open device, found by its ids.
//
// All functions block and may be called from any thread. The open hub belongs to the thread that
// opened it, from the beginning of the open to the end of the close. To every other thread the
// device is busy: opening fails with LastError 5, closing does nothing, requests return
// kHubNotOpen. The owner must close on every path.

/// Status of a request when the calling thread has no hub open.
inline constexpr std::uint32_t kHubNotOpen = 0xE00002F0;
/// Status of a request after Hub_Abandon().
inline constexpr std::uint32_t kHubAbandoned = 0xE00002EB;

/// Sets the bus and the clock to use; both must outlive the last call of this room. Call it once at
/// start. A later call replaces them and undoes Hub_Abandon(). It does nothing while a hub is open.
void Hub_UsePlatform(UsbBus& bus, Clock& clock);

/// Whether a supported hub is attached. Opens nothing and does not wait for an open hub. Sets
/// LastError to 2 without a device list, and to 3 or 4 for a device that gave no access. Does not
/// change it if nothing matches.
bool Hub_FindDevice();

/// Opens the hub of the thread's HubSession, or without a session the first supported hub in the
/// bus's order, and sends it the open-time request, whose status is ignored. Does not try a second
/// hub. LastError: 2 without a device list; 5 if no supported hub is there, it cannot be opened,
/// another thread has it, or the program is ending; Hub_LastFailure() tells which. A second open
/// without a close replaces the old device, which stays open and unused until the process ends.
///
/// `limit`: how long the requests may take until the close, all together; none: each has the
/// platform's own limit. A request that comes late still has a tenth of a second.
bool Hub_OpenDevice(std::optional<Clock::Duration> limit = {});

/// Closes the hub that the calling thread opened; does nothing otherwise.
void Hub_CloseDevice();

/// Whether any thread has a hub open.
bool Hub_IsOpen();

/// One control transfer on the open hub. Returns 0 on success, kHubNotOpen or kHubAbandoned if the
/// request never reached the bus, otherwise the platform's status. No retry, no time-out but that
/// of the open, does not set LastError.
std::uint32_t Hub_ControlRequest(ControlRequest request);

/// Called after each request that has reached the bus, on the thread that sent it, with its status.
/// Set it before the first flow; an empty one ends that.
void Hub_ObserveRequests(std::function<void(const ControlRequest&, std::uint32_t status)> observer);

/// Tells the thread's session that the open hub will be asked to restart.
void Hub_BeginRestart();

/// Opens the hub as soon as it is there. Looks for it at each event of the bus and once a second,
/// and tries a hub that refuses again after 50 ms, or at the next event. Gives up after `limit`; at
/// once if another flow has locked its place or, unless `isForRestart`, for any reason but that the
/// hub is busy. Watches the bus meanwhile, so nobody else may. The thread must have a session;
/// tells it once a second that it waits.
bool Hub_AwaitDevice(Clock::Duration limit, bool isForRestart);

/// Sleeps on the platform's clock.
void Hub_Pause(Clock::Duration pause);

/// The program is ending: from now on every open fails and every request returns kHubAbandoned. A
/// transfer in flight ends by itself; closing still works. Together with Clock::interrupt() this
/// makes every flow take its failure path at once.
void Hub_Abandon();

/// Whether the program is ending.
bool Hub_IsAbandoned();

} // namespace vornadel
