#pragma once

#include "cli/CommandLine.h"
#include "cli/Environment.h"
#include "cli/StopRequest.h"
#include "platform/Platform.h"

#include <ostream>

namespace vornadel
{

/// Runs the command on `platform` and returns the exit status. Call Hub_UsePlatform() with the same
/// platform first. `resourcePath` is the folder of the bundle's config.ini; `stop` may be used by
/// another thread meanwhile. Blocks until done.
int runCommand(const CommandLine& commandLine, Platform& platform, const std::string& resourcePath,
               std::ostream& out, std::ostream& err, const Environment& env, StopRequest& stop);

} // namespace vornadel
