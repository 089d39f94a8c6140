#pragma once

#include "cli/Backups.h"
#include "flows/FlowOptions.h"
#include "flows/FlowReporter.h"

#include <optional>
#include <string>

namespace vornadel
{

struct Command;

/// The hub of a flow.
struct FlowTarget {
    std::string place; ///< for the user
    BackupOwner owner; ///< in the names of backups
    FlowOptions options;
};

/// The hub that the command line selects, and how its flow runs. Says which devices in use hang
/// below the hub. Otherwise nothing, the exit status in `status`, and the reason on standard error.
std::optional<FlowTarget> chooseTarget(const Command& command, int& status);

/// After a flow: tells the true cause of a failure, and returns the exit status.
int explainResult(const Command& command, FlowKind flow, const FlowResult& result,
                  const FlowTarget& target);

} // namespace vornadel
