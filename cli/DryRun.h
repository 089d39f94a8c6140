#pragma once

#include "cli/SaveFirst.h"

#include <cstdint>
#include <span>
#include <string>

namespace CLI
{
class App;
} // namespace CLI

namespace vornadel
{

/// --dry-run and --dry-run=offline.
void addDryRun(CLI::App& verb, CommandLine& line);

/// Why the options do not fit together; null if they do.
const char* whyDryRunIsUnfit(const CommandLine& line);

bool isDryRun(const CommandLine& line);

/// What a verb would do to the flash.
struct FlashPlan {
    std::string work{}; ///< after the erase: ", write new.bin and compare"
    WantedFlash wanted{};
};

/// Tells what a flow would do, after every check that can be made without it, and returns the exit
/// status. Asks the hub what it runs; reads its flash if it runs its ROM code, because otherwise it
/// would have to restart. Offline, nothing is sent to the hub.
int tellPlan(const Command& command, const FlowTarget& target, const FlashPlan& plan);

} // namespace vornadel
