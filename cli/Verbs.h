#pragma once

#include "cli/CommandLine.h"
#include "cli/StopRequest.h"
#include "config/ToolConfig.h"
#include "platform/Platform.h"

#include <ostream>
#include <string>

namespace vornadel
{

/// What every verb works with.
struct Command {
    const CommandLine& line;
    Platform& platform;
    const std::string& resourcePath;
    const std::string& configFile; ///< that has been read
    const ToolConfig& config;      ///< its content
    std::ostream& out;
    std::ostream& err;
    bool terminal; ///< `out` is one
    StopRequest& stop;
};

// The verbs. Each returns the exit status.

int updateVerb(const Command& command);
int scalarVerb(const Command& command);
int readVerb(const Command& command);
int eraseVerb(const Command& command);
int infoVerb(const Command& command);
int listVerb(const Command& command);

} // namespace vornadel
