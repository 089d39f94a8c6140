#include "cli/Failures.h"

#include "cli/EventStream.h"
#include "cli/LineStream.h"
#include "cli/NextCommand.h"
#include "cli/Verbs.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <iterator>
#include <string_view>

namespace vornadel
{

namespace
{

constexpr const char* kUntouched = "unchanged";
constexpr const char* kNotAsked = "not asked";
constexpr const char* kUnchangedReplug = "unchanged; plug it in again first";
constexpr const char* kReplug = "not known; plug it in again first";

constexpr FailureKind kKinds[] = {
    {FailureId::Internal, "internal", kExitFailure, "not known", "{hub} info"},
    {FailureId::OutputNotWritten, "output-not-written", kExitFailure, kUntouched, "{again}"},
    {FailureId::FileNotSaved, "file-not-saved", kExitFailure, kUntouched, "ls -ld {folder}"},
    {FailureId::FileExists, "file-exists", kExitFailure, kUntouched, "{again} --force"},
    {FailureId::BackupNotSaved, "backup-not-saved", kExitFailure, kUntouched,
     "{again} --backup-dir ."},
    {FailureId::NoBackup, "no-backup", kExitImageRefused, kUntouched, "{hub} restore FILE"},
    {FailureId::NotAgreed, "not-agreed", kExitWouldAsk, kUntouched, "{again} --yes"},
    {FailureId::NoAdministrator, "no-administrator", kExitNoAccess, kUntouched,
     "vornadelctl access show"},
    {FailureId::AccessUnchanged, "access-unchanged", kExitFailure, kUntouched,
     "vornadelctl access show"},
    {FailureId::Usage, "usage", kExitUsage, kNotAsked, "vornadelctl help {verb}"},
    {FailureId::ConfigUnusable, "config-unusable", kExitUsage, kUntouched,
     "vornadelctl version -v"},
    {FailureId::ConfigFull, "config-full", kExitUsage, kUntouched, "vornadelctl version -v"},
    {FailureId::SimulatedHub, "simulated-hub", kExitUsage, kUntouched, "vornadelctl --help"},
    {FailureId::LogUnusable, "log-unusable", kExitUsage, kUntouched, "{again}"},
    {FailureId::NoUsbList, "no-usb-list", kExitNoHub, kUntouched, "lsusb"},
    {FailureId::NoHub, "no-hub", kExitNoHub, kUntouched, "vornadelctl list --all"},
    {FailureId::NoMatch, "no-match", kExitNoHub, kUntouched, "vornadelctl list"},
    {FailureId::SeveralHubs, "several-hubs", kExitSeveralHubs, kUntouched, "vornadelctl list"},
    {FailureId::PlacesUnknown, "places-unknown", kExitSeveralHubs, kUntouched, "vornadelctl list"},
    {FailureId::NoAccess, "no-access", kExitNoAccess,
     "unchanged; plug it in again after the next command", "vornadelctl list"},
    {FailureId::Busy, "busy", kExitBusy, kNotAsked, "{again}"},
    {FailureId::InUse, "in-use", kExitFailure, kUntouched, "vornadelctl help {verb}"},
    {FailureId::ImageUnreadable, "image-unreadable", kExitImageRefused, kUntouched,
     "vornadelctl help {verb}"},
    {FailureId::ImageRefused, "image-refused", kExitImageRefused, kUntouched,
     "vornadelctl help {verb}"},
    {FailureId::DefinitionsUnusable, "definitions-unusable", kExitUsage, kUntouched,
     "vornadelctl help {verb}"},
    {FailureId::Locked, "locked", kExitImageRefused, kUntouched, "vornadelctl help {verb}"},
    {FailureId::OpenFailed, "open-failed", kExitTransferFailed, kUntouched, "{again}"},
    {FailureId::Unplugged, "unplugged", kExitTransferFailed, kUnchangedReplug, "{again}"},
    {FailureId::Stalled, "stalled", kExitTransferFailed, kUnchangedReplug, "{again}"},
    {FailureId::ShortTransfer, "short-transfer", kExitTransferFailed, kUnchangedReplug, "{again}"},
    {FailureId::TimedOut, "timed-out", kExitTransferFailed, kUnchangedReplug, "{again}"},
    {FailureId::RequestFailed, "request-failed", kExitTransferFailed, kUnchangedReplug, "{again}"},
    {FailureId::NotRestarted, "not-restarted", kExitTransferFailed, kUnchangedReplug, "{again}"},
    {FailureId::NotReturned, "not-returned", kExitTransferFailed, kUnchangedReplug, "{again}"},
    // Not again: the place is that of the other hub now.
    {FailureId::AnotherHub, "another-hub", kExitTransferFailed, kUnchangedReplug,
     "vornadelctl list"},
    {FailureId::NoRomCode, "no-rom-code", kExitTransferFailed, kUnchangedReplug, "{again}"},
    {FailureId::FlashDiffers, "flash-differs", kExitDiffers, kReplug, "{again}"},
    {FailureId::NotBlank, "not-blank", kExitDiffers, kReplug, "{again}"},
    {FailureId::UnstableReads, "unstable-reads", kExitDiffers, kReplug, "{again}"},
    {FailureId::NotBack, "not-back", kExitNotConfirmed, kReplug, "{hub} info"},
    {FailureId::StillRomCode, "still-rom-code", kExitNotConfirmed, kReplug, "{hub} info"},
    {FailureId::OtherVersion, "other-version", kExitNotConfirmed, kReplug, "{hub} info"},
    {FailureId::SomeFailed, "some-failed", kExitSomeFailed, kUntouched, "vornadelctl doctor"},
    {FailureId::Interrupted, "interrupted", kExitFailure, kUntouched, "{again}"},
};

} // namespace

std::span<const FailureKind> allFailureKinds() { return kKinds; }

const FailureKind& kindOf(FailureId id)
{
    return *std::find_if(std::begin(kKinds), std::end(kKinds),
                         [&](const FailureKind& kind) { return kind.id == id; });
}

void printFailure(std::ostream& err, const Failure& failure, const std::string& log)
{
    const std::string what = withoutControls(failure.what);
    const std::size_t lineEnd = std::min(what.find('\n'), what.size());
    err << what.substr(0, lineEnd) << " [" << kindOf(failure.id).name << ']' << what.substr(lineEnd)
        << '\n'
        << "  hub:  " << failure.state << '\n'
        << "  next: " << withoutControls(failure.next) << '\n'
        << "  log:  " << (log.empty() ? "none" : log) << '\n'
        << std::flush;
}

int fail(const Command& command, const Failure& failure)
{
    const FailureKind& kind = kindOf(failure.id);
    Failure complete = failure;
    if (complete.state.empty()) {
        const bool none =
            command.result.place.empty() && std::string_view(kind.state) == kUntouched;
        complete.state = none ? kNotAsked : kind.state;
    }
    complete.next = nextCommand(command, complete.next.empty() ? kind.next : complete.next);
    if (command.events != nullptr) {
        command.log.note(complete.what + " [" + kind.name + ']');
        command.events->emit("message",
                             {{"level", "error"}, {"id", kind.name}, {"text", complete.what}});
    } else {
        printFailure(command.err, complete, command.log.path);
    }
    if (!command.result.failure) {
        command.result.failure = std::move(complete);
    }
    return kind.status;
}

int fail(const Command& command, FailureId id, const std::string& what, const std::string& next)
{
    return fail(command, Failure{.id = id, .what = what, .next = next});
}

} // namespace vornadel
