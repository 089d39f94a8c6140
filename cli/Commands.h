#pragma once

#include "cli/CommandLine.h"
#include "cli/StopRequest.h"
#include "platform/Platform.h"

#include <ostream>

namespace vornadel
{

/// Runs the command on `platform` and returns the exit status. Call Hub_UsePlatform() with the same
/// platform first. `resourcePath` is the folder of config.ini; `terminal` says whether `out` is a
/// terminal; `stop` may be used by another thread meanwhile. Blocks until done.
int runCommand(const CommandLine& commandLine, Platform& platform, const std::string& resourcePath,
               std::ostream& out, std::ostream& err, bool terminal, StopRequest& stop);

} // namespace vornadel
