#pragma once

#include "cli/Failures.h"
#include "flows/FlowReporter.h"

#include <cstdint>
#include <string>

namespace vornadel
{

/// What an outcome names.
struct OutcomeNames {
    std::string place{};         ///< of the hub
    std::int64_t owner{};        ///< the process that works on it; 0: not known
    std::string grantAccess{};   ///< the command that lets the user open it
    std::string backupProblem{}; ///< why its flash could not be saved
};

/// What a flow's failure means for the user.
Failure outcomeOf(FlowKind flow, const FlowResult& result, const OutcomeNames& names);

/// The same for a single failure outside a flow.
Failure outcomeOf(HubFailure failure, const OutcomeNames& names);

/// "busy: process 1234 works on it"
std::string busySentence(std::int64_t owner);

/// The command that lets the user open the hubs of config.ini.
std::string accessCommand(const std::string& resourcePath);

} // namespace vornadel
