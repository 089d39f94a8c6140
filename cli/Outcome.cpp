#include "cli/Outcome.h"

#include "base/GenFun.h"
#include "cli/ShownText.h"

#include <algorithm>
#include <iterator>

namespace vornadel
{

namespace
{

/// `%` stands for the place.
constexpr struct {
    HubFailure failure;
    FailureId id; ///< when the hub is opened or asked
    const char* text;
    FailureId afterwards = FailureId::NotBack; ///< when the work is done
} kFailures[] = {
    {HubFailure::None, FailureId::Internal, "the reason is not known"},
    {HubFailure::NoHub, FailureId::NoHub, "no supported hub is at % any more"},
    {HubFailure::NoAccess, FailureId::NoAccess, "permission is missing"},
    {HubFailure::Busy, FailureId::Busy, "the hub is "}, // and who has it
    {HubFailure::NotOpened, FailureId::OpenFailed,
     "the system could not open the hub, and gave no reason"},
    {HubFailure::Unplugged, FailureId::Unplugged, "the hub was unplugged"},
    {HubFailure::Stalled, FailureId::Stalled, "the hub refused the request (stall)"},
    {HubFailure::Short, FailureId::ShortTransfer, "the hub moved too few bytes (short transfer)"},
    {HubFailure::TimedOut, FailureId::TimedOut, "the hub did not answer in time"},
    {HubFailure::NotAnswered, FailureId::RequestFailed, "the request failed"},
    {HubFailure::NotRestarted, FailureId::NotRestarted,
     "the hub did not restart, although it confirmed it"},
    {HubFailure::NotReturned, FailureId::NotReturned, "the hub did not return to %"},
    {HubFailure::AnotherHub, FailureId::AnotherHub, "another hub is at % now"},
    {HubFailure::NoRomCode, FailureId::NoRomCode,
     "the hub does not run its ROM code after the restart"},
    {HubFailure::NoFlashCode, FailureId::StillRomCode, "the hub still runs its ROM code",
     FailureId::StillRomCode},
    {HubFailure::OtherVersion, FailureId::OtherVersion, "the hub runs another firmware version",
     FailureId::OtherVersion},
    {HubFailure::Abandoned, FailureId::Interrupted, "the program was stopped"},
};

/// What each kind of flow has done before the last restart.
constexpr struct {
    FlowKind flow;
    const char* done;
} kFlows[] = {
    {FlowKind::Update, "verified"},  {FlowKind::Read, "read"},       {FlowKind::Erase, "erased"},
    {FlowKind::Restore, "verified"}, {FlowKind::Verify, "compared"}, {FlowKind::Restart, "asked"},
};

const auto& rowOf(HubFailure failure)
{
    return *std::find_if(std::begin(kFailures), std::end(kFailures),
                         [&](const auto& row) { return row.failure == failure; });
}

std::string textOf(HubFailure failure, const OutcomeNames& names)
{
    std::string text = rowOf(failure).text;
    if (const std::size_t place = text.find('%'); place != std::string::npos) {
        text.replace(place, 1, names.place.empty() ? "its place" : names.place);
    }
    return failure == HubFailure::Busy ? text + busySentence(names.owner) : text;
}

/// Only for a hub that may not be opened; otherwise empty: the usual one.
std::string nextAfter(HubFailure failure, const OutcomeNames& names)
{
    return failure == HubFailure::NoAccess ? names.grantAccess : std::string();
}

/// "3 bytes, the first at 0x1000"
std::string places(const FlowResult& result)
{
    return std::to_string(result.wrongBytes) + (result.wrongBytes == 1 ? " byte" : " bytes") +
           ", the first at 0x" + hex4(result.address);
}

/// ": write at 0x1000"
std::string requestOf(const FlowResult& result)
{
    switch (result.step) {
    case Step::Erase:
        return ": erase";
    case Step::Write:
        return ": write at 0x" + hex4(result.address);
    default:
        return ": read at 0x" + hex4(result.address);
    }
}

const char* textOf(FlashState state)
{
    switch (state) {
    case FlashState::Untouched:
        return "unchanged";
    case FlashState::Erased:
        return "blank";
    case FlashState::Incomplete:
        return "incomplete";
    case FlashState::Written:
        return "written, but not compared";
    case FlashState::Verified:
        return "as in the image";
    }
    return "";
}

const char* textOf(HubState state)
{
    switch (state) {
    case HubState::Unknown:
        return "in an unknown state";
    case HubState::Flash:
        return "runs its firmware";
    case HubState::Rom:
        return "runs its ROM code";
    case HubState::Absent:
        return "not at its place";
    }
    return "";
}

/// "runs its ROM code, flash incomplete"
std::string stateOf(const FlowResult& result)
{
    // A hub in its ROM code can be worked on; otherwise only its firmware is of use.
    const bool workRemains =
        result.hub == HubState::Rom && result.changed && result.flash != FlashState::Verified;
    const bool isFine = result.hub == HubState::Flash || workRemains;
    return std::string(textOf(result.hub)) + ", flash " + textOf(result.flash) +
           (isFine ? "" : "; plug it in again first");
}

/// What went wrong in a flow's work or at its end.
std::string causeOf(FlowKind flow, const FlowResult& result, const OutcomeNames& names)
{
    std::string failure = textOf(result.failure, names);
    switch (result.cause) {
    case Cause::None:
        break;
    case Cause::WrongImage:
        return "no firmware image";
    case Cause::NotOpened:
        return failure;
    case Cause::RequestFailed:
        return failure + requestOf(result);
    case Cause::Different:
        return "the flash differs from the image in " + places(result);
    case Cause::NotErased:
        return "not erased: " + places(result);
    case Cause::Unstable:
        return "two reads of the flash differ in " + places(result);
    case Cause::NotRestarted:
    case Cause::NotConfirmed:
        return std::find_if(std::begin(kFlows), std::end(kFlows),
                            [&](const auto& row) { return row.flow == flow; })
                   ->done +
               std::string(", but ") + failure;
    case Cause::NotSaved:
        return "the flash could not be saved: " + names.backupProblem +
               (result.failure == HubFailure::None
                    ? ""
                    : "; and the hub could not be sent back to its firmware: " + failure);
    case Cause::Interrupted:
        return result.failure == HubFailure::None
                   ? "stopped"
                   : "stopped, but the hub could not be sent back to its firmware: " + failure;
    }
    return failure;
}

FailureId idOf(const FlowResult& result)
{
    switch (result.cause) {
    case Cause::None:
        return FailureId::Internal;
    case Cause::WrongImage:
        return FailureId::ImageRefused;
    case Cause::NotOpened:
    case Cause::RequestFailed:
        return rowOf(result.failure).id;
    case Cause::Different:
        return FailureId::FlashDiffers;
    case Cause::NotErased:
        return FailureId::NotBlank;
    case Cause::Unstable:
        return FailureId::UnstableReads;
    case Cause::NotRestarted:
    case Cause::NotConfirmed:
        return rowOf(result.failure).afterwards;
    case Cause::NotSaved:
        return FailureId::BackupNotSaved;
    case Cause::Interrupted:
        return FailureId::Interrupted;
    }
    return FailureId::Internal;
}

/// Whether the flow has had the hub open.
bool hasReached(HubFailure failure)
{
    return failure != HubFailure::NoHub && failure != HubFailure::NoAccess &&
           failure != HubFailure::Busy && failure != HubFailure::NotOpened;
}

} // namespace

Failure outcomeOf(FlowKind flow, const FlowResult& result, const OutcomeNames& names)
{
    const bool reached = result.cause != Cause::WrongImage &&
                         (result.cause != Cause::NotOpened || hasReached(result.failure));
    return {idOf(result), causeOf(flow, result, names), reached ? stateOf(result) : std::string(),
            nextAfter(result.failure, names)};
}

Failure outcomeOf(HubFailure failure, const OutcomeNames& names)
{
    return {rowOf(failure).id, textOf(failure, names), {}, nextAfter(failure, names)};
}

std::string busySentence(std::int64_t owner)
{
    return owner == 0 ? "busy: another program has it open, or its place cannot be locked"
                      : "busy: process " + std::to_string(owner) + " works on it";
}

std::string accessCommand(const std::string& resourcePath)
{
    const std::string folder = ShellEscape(resourcePath.c_str());
    return "rm -rf /tmp/HubUpdaterDriver.kext && cp -R " + folder +
           "/HubUpdaterDriver.kext /tmp && sudo " + folder + "/load";
}

} // namespace vornadel
