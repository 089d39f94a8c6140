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

/// Whether the shell can be handed the path of the resource directory. ShellEscape() leaves control
/// characters as they are, and a newline or a tab would end the argument there.
bool isFitForShell(const std::string& resourcePath);

/// Copies the driver's bundle from the resource directory to the temporary directory, where the
/// script `load` expects it. Nothing tells whether that worked. A command of more than 511 bytes
/// ends the process. The path must be fit for the shell.
void copyDriverBundle(Shell& shell, const std::string& resourcePath);

/// Makes the folder that copyDriverBundle() copies to, or checks that it is safe to copy to the one
/// that is there: it and everything in it is the caller's, a folder or a plain file with one name.
/// Takes the right to write into these folders from everybody else, so that what was checked stays
/// so. Returns why nothing may be copied there, or an empty text.
std::string claimDriverCopy(const std::string& folder);

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
