#pragma once

#include "platform/PrivilegedRun.h"
#include "platform/Shell.h"

#include <string>
#include <string_view>

namespace vornadel
{

// The helper driver that gives access to the hub's flash, and the administrator scripts of the
// resource directory that load it, unload it and reboot. Scripts are started without waiting for
// them; this code does not learn how they end.

/// Whether the path of the resource directory can be passed to the shell. ShellEscape() does not
/// change control characters, and a newline or a tab would end the argument.
bool isFitForShell(const std::string& resourcePath);

/// Copies the driver's bundle from the resource directory to the temporary directory, where the
/// script `load` expects it. Does not report whether that worked. A command of more than 511 bytes
/// ends the process. Check the path with isFitForShell() first.
void copyDriverBundle(Shell& shell, const std::string& resourcePath);

/// Where copyDriverBundle() copies to.
inline constexpr const char* kDriverCopy = "/tmp/HubUpdaterDriver.kext";

/// Creates the folder that copyDriverBundle() copies to. If it exists, checks that copying is safe:
/// it and everything in it must belong to the caller and be folders or plain files with one name.
/// Removes everybody else's right to write to these folders, so that the check stays valid. Returns
/// why nothing may be copied there, or an empty text.
std::string claimDriverCopy(const std::string& folder);

/// Starts a script of the resource directory as administrator. False if the platform cannot.
bool startScript(PrivilegedRun& privileged, const std::string& resourcePath, const char* name);

/// Restarts a hub that was left in its ROM code into the firmware in its flash, and closes it. Does
/// nothing without a hub. Blocks for the waits of the restarts, up to 40 s each.
void returnHubToFlash();

/// Whether the machine must be restarted before it accepts the driver: the system requires a boot
/// argument for drivers, and the snapshot `bootArguments` does not contain it.
bool needsReboot(bool systemWantsBootArgument, std::string_view bootArguments);

} // namespace vornadel
