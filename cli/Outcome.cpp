#include "cli/Outcome.h"

#include "base/GenFun.h"
#include "cli/CommandLine.h"
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
    int status; ///< if the hub could not be opened, or restarted into its ROM code
    const char* text;
    bool comesBackByPlugging = false; ///< if the user plugs it in again
} kFailures[] = {
    {HubFailure::None, kExitFailure, "the reason is not known"},
    {HubFailure::NoHub, kExitNoHub, "no supported hub is at % any more"},
    {HubFailure::NoAccess, kExitNoAccess, "permission is missing"},
    {HubFailure::Busy, kExitBusy, "the hub is "}, // and who has it
    {HubFailure::NotOpened, kExitFailure, "the system could not open the hub, and gave no reason"},
    {HubFailure::Unplugged, kExitTransferFailed, "the hub was unplugged", true},
    {HubFailure::Stalled, kExitTransferFailed, "the hub refused the request (stall)", true},
    {HubFailure::Short, kExitTransferFailed, "the hub moved too few bytes (short transfer)", true},
    {HubFailure::TimedOut, kExitTransferFailed, "the hub did not answer in time", true},
    {HubFailure::NotAnswered, kExitTransferFailed, "the request failed", true},
    {HubFailure::NotRestarted, kExitFailure, "the hub did not restart, although it confirmed it",
     true},
    {HubFailure::NotReturned, kExitFailure, "the hub did not return to %", true},
    {HubFailure::AnotherHub, kExitFailure, "another hub is at % now", true},
    {HubFailure::NoRomCode, kExitFailure, "the hub does not run its ROM code after the restart",
     true},
    {HubFailure::NoFlashCode, kExitNotConfirmed, "the hub still runs its ROM code"},
    {HubFailure::OtherVersion, kExitNotConfirmed, "the hub runs another firmware version"},
    {HubFailure::Abandoned, kExitFailure, "the program was stopped", true},
};

/// For each kind of flow.
constexpr struct {
    FlowKind flow;
    const char* afterChange; ///< what to do after a failure during its work
    const char* done;        ///< what has been done before the last restart
} kFlows[] = {
    {FlowKind::Update, "the flash may hold no whole firmware; run the update again", "verified"},
    {FlowKind::Read, "nothing was changed; plug the hub in again, so that it runs its firmware",
     "read"},
    {FlowKind::Erase, "the flash may be erased or not; erase it again", "erased"},
    {FlowKind::Restore, "the flash may hold anything; restore it again", "verified"},
    {FlowKind::Verify, "nothing was changed", "compared"},
    {FlowKind::Restart, "nothing was changed", "restarted"},
};

constexpr const char* kLookAgain =
    "; plug the hub in again, then \"vornadelctl info\" tells what it runs";

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
    if (failure == HubFailure::Busy) {
        text += busySentence(names.owner);
    } else if (failure == HubFailure::NoAccess) {
        text += "; to grant it: " + names.grantAccess + "; then plug the hub in again";
    }
    return text;
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

} // namespace

Outcome outcomeOf(FlowKind flow, const FlowResult& result, const OutcomeNames& names)
{
    const auto& about = *std::find_if(std::begin(kFlows), std::end(kFlows),
                                      [&](const auto& row) { return row.flow == flow; });
    const std::string failure = textOf(result.failure, names);
    const std::string next = std::string("; ") + about.afterChange;
    switch (result.cause) {
    case Cause::None:
        return {kExitSuccess, {}};
    case Cause::WrongImage: // the flow's own lines say it all
        return {kExitImageRefused, {}};
    case Cause::NotOpened:
        return {rowOf(result.failure).status, failure + "; the flash is unchanged" +
                                                  (rowOf(result.failure).comesBackByPlugging
                                                       ? "; plug the hub in again and repeat"
                                                       : "")};
    case Cause::RequestFailed:
        return {result.failure == HubFailure::Abandoned ? kExitFailure : kExitTransferFailed,
                failure + requestOf(result) + next};
    case Cause::Different:
        return {kExitDiffers, "the flash differs from the image in " + places(result) + next};
    case Cause::NotErased:
        return {kExitDiffers, "not erased: " + places(result) + next};
    case Cause::Unstable:
        return {kExitDiffers, "two reads of the flash differ in " + places(result) + next};
    case Cause::NotRestarted:
    case Cause::NotConfirmed:
        return {kExitNotConfirmed, std::string(about.done) + ", but " + failure + kLookAgain};
    case Cause::NotSaved:
        return {kExitFailure, "the flash could not be saved; it is unchanged"};
    case Cause::Interrupted:
        return {kExitFailure,
                result.failure == HubFailure::None
                    ? "stopped; the flash is unchanged"
                    : "stopped; the flash is unchanged, but the hub could not be sent back to its "
                      "firmware: " +
                          failure + kLookAgain};
    }
    return {kExitFailure, failure};
}

Outcome outcomeOf(HubFailure failure, const OutcomeNames& names)
{
    return {rowOf(failure).status, textOf(failure, names)};
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
