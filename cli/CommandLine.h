#pragma once

#include <optional>
#include <ostream>
#include <string>

namespace vornadel
{

/// The parsed command line of vornadelctl.
struct CommandLine {
    enum class Verb { Update, Scalar, Read, Erase, Info, List };

    Verb verb = Verb::List;
    std::string image;      ///< of update, read and info; empty: info is about the hub
    std::string configFile; ///< empty: config.ini in the resource directory
    std::optional<std::string> simulatedHub; ///< set: work on the simulated hub, with these options
};

/// Exit statuses of vornadelctl.
inline constexpr int kExitSuccess = 0; ///< done; an update is verified, a read is saved
inline constexpr int kExitFailure = 1; ///< not done; the reason has been printed
/// The command line was not understood, the file of --config cannot be used, or the simulated hub
/// cannot be set up.
inline constexpr int kExitUsage = 2;
inline constexpr int kExitInterrupted = 130; ///< a signal stopped it half-way

/// Parses the command line. Empty if there is a command to run; otherwise the exit status, after
/// help, the version or an error has been printed.
std::optional<int> parseCommandLine(int argc, const char* const* argv, CommandLine& commandLine,
                                    std::ostream& out, std::ostream& err);

} // namespace vornadel
