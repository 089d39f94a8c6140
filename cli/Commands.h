#pragma once

#include "cli/CommandLine.h"
#include "platform/Platform.h"

#include <ostream>

namespace vornadel
{

/// Does what the command line asks for, on a platform that Hub_UsePlatform() has been told about,
/// and returns the exit status. `resourcePath` is the folder of config.ini; `terminal` says that
/// `out` is one. Blocks until done.
int runCommand(const CommandLine& commandLine, Platform& platform, const std::string& resourcePath,
               std::ostream& out, std::ostream& err, bool terminal);

} // namespace vornadel
