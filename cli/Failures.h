#pragma once

#include "cli/Json.h"
#include "flows/FlowReporter.h"

#include <memory>
#include <optional>
#include <ostream>
#include <span>
#include <string>

namespace vornadel
{

struct Command;

/// What can go wrong. Each has a row in Failures.cpp and one in docs/messages.md.
enum class FailureId {
    Internal,
    OutputNotWritten,
    FileNotSaved,
    FileExists,
    BackupNotSaved,
    NoBackup,
    NotAgreed,
    NoAdministrator,
    AccessUnchanged,
    Usage,
    ConfigUnusable,
    ConfigFull,
    SimulatedHub,
    LogUnusable,
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
    OpenFailed,
    Unplugged,
    Stalled,
    ShortTransfer,
    TimedOut,
    RequestFailed,
    NotRestarted,
    NotReturned,
    AnotherHub,
    NoRomCode,
    FlashDiffers,
    NotBlank,
    UnstableReads,
    SomeFailed,
    NotBack,
    StillRomCode,
    OtherVersion,
    Interrupted,
};

/// What every failure of one kind has in common.
struct FailureKind {
    FailureId id;
    const char* name; ///< "no-hub"; scripts know it, so it never changes
    int status;       ///< of the program
    /// The hub's state afterwards, unless a flow knows better.
    const char* state;
    /// What to do next: a command line. "{again}" is this one, with the hub's place, "{hub}" the
    /// begin of another one about the same hub, "{verb}" the verb, and "{folder}" the folder of its
    /// file.
    const char* next;
};

std::span<const FailureKind> allFailureKinds();
const FailureKind& kindOf(FailureId id);

/// One failure.
struct Failure {
    FailureId id;
    std::string what{};  ///< what happened and where; without a full stop and a line end
    std::string state{}; ///< as in FailureKind; empty: the usual one
    std::string next{};  ///< the same
};

/// How a command ended, for its last event. Verbs fill it in.
struct CommandResult {
    std::string place{};              ///< of the hub, if one was chosen
    std::optional<Failure> failure{}; ///< the first that was told, complete
    std::optional<FlowResult> flow{}; ///< of the flow, if one ran
    std::string backup{};             ///< the file that holds what was in the flash
    std::string backupProblem{};      ///< why there is none, if the flow ended for that
    /// Between an image and the flash, if they were compared: see ImageDifferences.
    std::shared_ptr<const Json> differences{};
    bool printed = false; ///< the verb's own object, with --json
};

/// The four lines of a failure whose members are all set; `log` is the log file, if there is one.
void printFailure(std::ostream& err, const Failure& failure, const std::string& log);

/// Tells a failure on standard error, or as an event, and returns its exit status.
int fail(const Command& command, const Failure& failure);
int fail(const Command& command, FailureId id, const std::string& what,
         const std::string& next = {});

} // namespace vornadel
