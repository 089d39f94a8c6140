#include "cli/DryRun.h"

#include "cli/Backups.h"
#include "cli/Definitions.h"
#include "cli/FlowTarget.h"
#include "cli/HubChoices.h"
#include "cli/ImageDifferences.h"
#include "cli/Options.h"
#include "cli/Outcome.h"
#include "cli/ShownText.h"
#include "cli/Verbs.h"
#include "hub/FlashGeometry.h"
#include "hub/HubCommands.h"
#include "hub/HubSession.h"
#include "hub/HubTransport.h"

#include <algorithm>
#include <memory>
#include <sstream>
#include <vector>

namespace vornadel
{

namespace
{

constexpr const char* kOnline = "online";
constexpr const char* kOffline = "offline";

/// What a hub tells without a restart.
struct LookedAt {
    HubFailure failure = HubFailure::None;
    std::int64_t owner{};
    HubStatusBlock status{};
    std::vector<std::uint8_t> flash{}; ///< empty unless it runs its ROM code
};

HubFailure readFlash(std::vector<std::uint8_t>& flash)
{
    flash.resize(kFlashSize);
    for (std::uint32_t address = 0; address < kFlashSize; address += kFlashPiece) {
        if (Hub_ReadFlash(address, std::span(flash).subspan(address, kFlashPiece)) != 0) {
            return Hub_LastFailure();
        }
    }
    return HubFailure::None;
}

LookedAt lookAt(const UsbPlace& place)
{
    LookedAt seen;
    const HubSession session({.place = place, .strict = true});
    if (!Hub_OpenDevice()) {
        seen.failure = Hub_LastFailure();
        seen.owner = session.owner().processId;
        return seen;
    }
    if (Hub_ReadStatusBlock(seen.status) != 0) {
        seen.failure = Hub_LastFailure();
    } else if (romCodeRunsBy(seen.status)) {
        seen.failure = readFlash(seen.flash);
    }
    Hub_CloseDevice();
    return seen;
}

/// Tells in what the flash differs from what it is to hold.
int tellDifferences(const Command& command, const LookedAt& seen, const FlashPlan& plan)
{
    std::ostream& out = command.out;
    if (seen.flash.empty()) {
        out << "flash:   it cannot be read without a restart, so what differs is not known\n";
        return kExitSuccess;
    }
    if (!command.line.alwaysWrite && holds(seen.flash, plan.wanted)) {
        out << "flash:   " << plan.wanted.alreadySo << ", so nothing would be changed\n";
        return kExitSuccess;
    }
    Definitions definitions;
    if (const int status = readDefinitions(command, definitions); status != kExitSuccess) {
        return status;
    }
    std::vector<std::uint8_t> wanted(kFlashSize, kFlashBlank);
    std::copy(plan.wanted.begin.begin(), plan.wanted.begin.end(), wanted.begin());
    FwImage before;
    FwImage after;
    FwImage_Parse(before, seen.flash.data(), static_cast<std::int32_t>(seen.flash.size()));
    FwImage_Parse(after, wanted.data(), static_cast<std::int32_t>(wanted.size()));
    std::istringstream lines(tell(command, findDifferences(before, after, definitions.items)));
    for (std::string line; std::getline(lines, line);) {
        out << "differs: " << line << '\n';
    }
    return kExitSuccess;
}

int failToLook(const Command& command, const FlowTarget& target, const LookedAt& seen)
{
    return fail(command,
                outcomeOf(seen.failure, {.place = target.place,
                                         .owner = seen.owner,
                                         .grantAccess = accessCommand(command.resourcePath)}));
}

} // namespace

void addDryRun(CLI::App& verb, CommandLine& line)
{
    addFlagWithText(verb, "--dry-run{online}", line.dryRun,
                    "Check everything, tell what would be done, and do nothing of it. Only asks "
                    "the hub, and reads its flash if it runs its ROM code; with =offline, sends "
                    "nothing at all");
    addDefinitionOptions(verb, line); // of what differs
}

const char* whyDryRunIsUnfit(const CommandLine& line)
{
    if (!line.dryRun.empty() && line.dryRun != kOnline && line.dryRun != kOffline) {
        return "--dry-run stands alone, or is --dry-run=offline";
    }
    return line.dryRun == kOffline && !line.hub.containerId.empty()
               ? "--container may ask the hub, so it does not go with --dry-run=offline"
               : nullptr;
}

bool isDryRun(const CommandLine& line) { return !line.dryRun.empty(); }

int tellPlan(const Command& command, const FlowTarget& target, const FlashPlan& plan)
{
    const CommandLine& line = command.line;
    const Backups backups = backupsOf(line, command.env);
    if (std::string problem; !line.noBackup && !backups.canSave(problem)) {
        return fail(command, FailureId::BackupNotSaved, "no backup could be saved: " + problem);
    }
    LookedAt seen;
    const bool offline = line.dryRun == kOffline;
    if (!offline) {
        seen = lookAt(target.options.hub.place);
    } else if (PlaceOwner owner; command.platform.usb.placeLocks().lock(target.options.hub.place,
                                                                        {}, owner) == nullptr) {
        seen = {.failure = HubFailure::Busy, .owner = owner.processId};
    }
    if (seen.failure != HubFailure::None) {
        return failToLook(command, target, seen);
    }
    std::ostream& out = command.out;
    out << "dry run: nothing is changed\n"
        << "hub:     " << target.place << ", serial number "
        << orDash(printable(target.owner.serialNumber)) << '\n'
        << "lock:    free\n";
    if (!offline) {
        out << "runs:    " << (romCodeRunsBy(seen.status) ? "ROM code " : "flash code ")
            << hex4(firmwareVersionIn(seen.status)) << '\n';
    }
    out << "work:    " << (line.noBackup ? "erase the flash" : "save the flash, erase it")
        << plan.work << ", and restart the hub\n"
        << "backup:  "
        << (line.noBackup ? "none (--no-backup)" : "a new file in " + backups.folder()) << '\n';
    return offline ? kExitSuccess : tellDifferences(command, seen, plan);
}

} // namespace vornadel
