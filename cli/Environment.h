#pragma once

#include "driver/AccessRule.h"
#include "driver/HubDriver.h"

#include <chrono>
#include <functional>
#include <istream>
#include <string>

namespace vornadel
{

/// What a command sees of its process, apart from its output. Tests make their own.
struct Environment {
    using Time = std::chrono::system_clock::time_point;

    /// An environment variable; empty if it is not set.
    std::function<std::string(const char* name)> variable;
    std::istream* in = nullptr; ///< standard input, for an image called "-"
    bool inIsTerminal = false;
    bool outIsTerminal = false;
    bool errIsTerminal = false;
    std::function<int()> columns;         ///< the terminal's width now; 0 if it is not known
    std::function<Time()> now;            ///< the wall clock
    std::string driverCopy = kDriverCopy; ///< where the driver's bundle is copied to
    std::string accessRule = kAccessRule; ///< the installed rule that lets users open hubs
    std::string systemConfigFolder = "/etc";
    /// The exit status of a command that would end with `status`: another one after a signal.
    std::function<int(int status)> statusAfterSignals = [](int status) { return status; };
};

/// Where the tool keeps its log and its backups: $XDG_STATE_HOME/vornadel, or that below
/// ~/.local/state. Empty if neither variable is an absolute path.
std::string stateFolder(const Environment& env);

/// Of this process.
Environment thisEnvironment();

} // namespace vornadel
