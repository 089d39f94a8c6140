#pragma once

#include "flows/FlowReporter.h"

#include <optional>
#include <string>

namespace vornadel
{

struct Command;

/// What can go wrong. Each has a row in Failures.cpp.
enum class FailureId {
    Internal,
    OutputNotWritten,
    Usage,
    ConfigUnusable,
    ConfigFull,
    SimulatedHub,
    NoUsbList,
    NoHub,
    NoMatch,
    SeveralHubs,
    PlacesUnknown,
    NoAccess,
    Busy,
    InUse,
    ImageUnreadable,
    ImageRefused,
    DefinitionsUnusable,
    Locked,
    FileNotSaved,
};

/// How a command ended, for the last event. Verbs fill it in.
struct CommandResult {
    std::string place{};                ///< of the hub, if one was chosen
    std::optional<FailureId> failure{}; ///< the last that was told
    std::optional<FlowResult> flow{};   ///< of the flow, if one ran
    std::string backup{};               ///< the file that holds what was in the flash
};

/// Tells a failure on standard error, and returns its exit status. `what` says in one line, without
/// a full stop, what happened and where. `next` is a command or a sentence, if it is not the usual
/// one for this failure.
int fail(const Command& command, FailureId id, const std::string& what,
         const std::string& next = {});

/// "no-hub"
const char* nameOf(FailureId id);

} // namespace vornadel
