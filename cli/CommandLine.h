#pragma once

#include "cli/HubSelector.h"

#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace CLI
{
class App;
} // namespace CLI

namespace vornadel
{

struct Verb;

/// The parsed command line of vornadelctl: the options of all verbs.
struct CommandLine {
    const Verb* verb = nullptr;
    std::vector<std::string> typed{}; ///< the whole line, without the program's name
    std::string image{};              ///< of update, read and info; empty: info is about the hub
    std::string configFile{};         ///< empty: config.ini in the resource directory
    std::optional<std::string> simulatedHub{}; ///< set: work on the simulated hub, with these
                                               ///< options
    std::string simulatedHubProblem{};         ///< why there is none
    std::string usageProblem{};                ///< why the line was not understood
    HubSelector hub = {};                      ///< of verbs about hubs
    bool refuseInUse = false;     ///< of verbs that restart the hub: not if a device hangs below it
    bool noBackup = false;        ///< of verbs that change the flash
    std::string backupFolder{};   ///< of the same; empty: the usual one
    bool alwaysWrite = false;     ///< of the same: also if the flash holds the image already
    bool yes = false;             ///< of erase: do not ask
    std::string dryRun{};         ///< of verbs that change the flash; empty: it is none
    bool rom = false;             ///< of restart: into the ROM code
    std::optional<int> timeout{}; ///< of wait, in seconds
    bool all = false;             ///< of list: every USB device; of info: every hub
    bool json = false;            ///< the output is for programs
    std::string progress = "auto";    ///< or "bar", "plain", "none"
    std::string color = "auto";       ///< or "always", "never"
    bool quiet = false;               ///< no words of a flow on standard output
    int verbose = 0;                  ///< 1: notes on standard error; 2: every request in the log
    std::string logFile{};            ///< empty: the usual one
    std::string otherImage{};         ///< of image diff
    std::vector<std::string> words{}; ///< of image get: names; of image set: NAME=VALUE
    std::string output{};             ///< of image set
    bool force = false;               ///< of verbs that save a file: replace one that exists
    std::string definitions{};        ///< of verbs that know properties: the file with them
    std::string controller{};         ///< of the same: which of the files beside the tool
};

// Exit statuses of vornadelctl.
inline constexpr int kExitSuccess = 0; ///< done; an update is confirmed, a read is saved
inline constexpr int kExitFailure = 1; ///< not done, for a reason that has no status of its own
/// The command line was not understood, the file of --config cannot be used or has no room for the
/// image's ids, or the simulated hub cannot be set up.
inline constexpr int kExitUsage = 2;
inline constexpr int kExitNoHub = 3;          ///< no hub, or none that is selected
inline constexpr int kExitSeveralHubs = 4;    ///< nothing says which one; nothing was sent
inline constexpr int kExitNoAccess = 5;       ///< the user may not open the hub
inline constexpr int kExitImageRefused = 6;   ///< no image, or not one for a hub; nothing was sent
inline constexpr int kExitTransferFailed = 7; ///< the hub did not do what a request asked
inline constexpr int kExitDiffers = 8;        ///< what was read is not what it should be
/// The flash has been verified, erased or saved, but the hub does not run what it should.
inline constexpr int kExitNotConfirmed = 9;
inline constexpr int kExitWouldAsk = 10;     ///< nobody has agreed to it; nothing was sent
inline constexpr int kExitBusy = 11;         ///< another flow or program has the hub
inline constexpr int kExitSomeFailed = 12;   ///< of several hubs
inline constexpr int kExitInterrupted = 128; ///< plus the number of the signal that stopped it

/// Parses the command line. Empty if there is a command to run; otherwise the exit status, after
/// help, the version or an error has been printed. With --json, a line that names a verb is run
/// although it was not understood, so that it ends with the result that programs expect.
std::optional<int> parseCommandLine(int argc, const char* const* argv, CommandLine& commandLine,
                                    std::ostream& out, std::ostream& err);

/// Calls `use` with the parser, for what is made from it.
void useParser(const std::function<void(const CLI::App&)>& use);

} // namespace vornadel
