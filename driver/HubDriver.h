#pragma once

#include "platform/PrivilegedRun.h"
#include "platform/Shell.h"

#include <string>
#include <string_view>

namespace vornadel
{

// The helper driver through which the hub's flash is reached, and the administrator scripts of the
// resource directory that load it, unload it and reboot. Scripts are started and not waited for;
// what becomes of them is not known here.

/// Copies the driver's bundle from the resource directory to the temporary directory, where the
/// script `load` expects it. Nothing tells whether that worked. A command of more than 511 bytes
/// ends the process.
void copyDriverBundle(Shell& shell, const std::string& resourcePath);

/// Makes the folder that copyDriverBundle() copies to, or sees that it may be copied to. False when
/// that would write to what is not the caller's, or wait for ever: the folder or one in it is a
/// link or somebody else's, others may write to it, or there is a link, a pipe or a file with a
/// second name in it.
bool claimDriverCopy(const std::string& folder);

/// Starts a script of the resource directory as administrator. False when the platform has no means
/// to.
bool startScript(PrivilegedRun& privileged, const std::string& resourcePath, const char* name);

/// Sends a hub that was left in its ROM code back to the firmware in its flash; the hub is closed
/// afterwards. Nothing happens without a hub. Blocks for the waits of a restart, up to 40 s each.
void returnHubToFlash();

/// Whether the machine must be started again before it takes the driver: the system wants drivers
/// to be allowed by a boot argument, and that was not there in the snapshot `bootArguments`.
bool needsReboot(bool systemWantsBootArgument, std::string_view bootArguments);

} // namespace vornadel
