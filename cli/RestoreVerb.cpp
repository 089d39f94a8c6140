#include "cli/CommandReporter.h"
#include "cli/DryRun.h"
#include "cli/FlowTarget.h"
#include "cli/ImageSource.h"
#include "cli/NextCommand.h"
#include "cli/Options.h"
#include "cli/SaveFirst.h"
#include "cli/SupportIds.h"
#include "cli/Verbs.h"
#include "flows/FirmwareUpdate.h"
#include "hub/FlashGeometry.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vornadel
{

namespace
{

/// Reads what is to be restored; a backup must have the content that its name tells. Returns the
/// exit status.
int readContent(const Command& command, const std::string& name, FwImage& content)
{
    if (isStandardInput(name)) {
        if (const int status = readSource(command, name, content); status != kExitSuccess) {
            return status;
        }
    } else {
        std::vector<std::uint8_t> bytes;
        std::string problem;
        if (!readBackup(name, bytes, problem)) {
            return fail(command, FailureId::ImageUnreadable, problem);
        }
        FwImage_Parse(content, bytes.data(), static_cast<std::int32_t>(bytes.size()));
    }
    if (static_cast<std::uint32_t>(content.size) > kFlashSize) {
        return fail(command, FailureId::ImageRefused,
                    shownSource(name) + " has " + std::to_string(content.size) +
                        " bytes, more than the hub's flash (" + std::to_string(kFlashSize) + ')');
    }
    return kExitSuccess;
}

int restore(const Command& command, const FwImage& content, FlowTarget target)
{
    const std::string name = shownSource(command.line.image);
    if (content.loaded) {
        if (const int status = supportIds(command, content); status != kExitSuccess) {
            return status;
        }
    }
    const WantedFlash wanted{.begin = bytesOf(content),
                             .alreadySo = "Already up to date: the flash holds this backup"};
    if (isDryRun(command.line)) {
        return tellPlan(command, target, {", write " + name + " and compare", wanted});
    }
    if (const int status = saveFirst(command, target, wanted); status != kExitSuccess) {
        return status;
    }
    CommandReporter reporter(command);
    restoreFlash(bytesOf(content), name, reporter, target.options);
    if (reporter.result().succeeded() && reporter.result().hub == HubState::Rom) {
        command.out << "The hub runs its ROM code, because what was restored is no firmware\n";
    }
    return explainResult(command, FlowKind::Restore, reporter.result(), target);
}

/// As if the command line had named the hub's newest backup. By the time of another try it may not
/// be the newest any more, because this one saves the flash, too.
int restoreNewest(const Command& command, const FlowTarget& target)
{
    const Backups backups = backupsOf(command.line, command.env);
    CommandLine line = command.line;
    line.image = backups.newestOf(target.owner);
    if (line.image.empty()) {
        // An update may have changed its serial number, or another hub may be there now.
        const std::string ofPlace = backups.newestOf({target.owner.place, {}});
        return fail(
            command, FailureId::NoBackup,
            backups.folder().empty()
                ? "neither XDG_STATE_HOME nor HOME says where backups are"
                : "there is no backup of this hub in " + backups.folder() +
                      (ofPlace.empty()
                           ? ""
                           : ", but one of a hub with another serial number at " + target.place),
            ofPlace.empty() ? "" : "{again} " + shellWord(ofPlace));
    }
    line.typed.push_back(line.image);
    const Command named{line,           command.platform, command.resourcePath, command.configFile,
                        command.config, command.out,      command.rawOut,       command.err,
                        command.env,    command.stop,     command.log,          command.events,
                        command.result};
    command.out << "Restoring " << shownSource(line.image) << '\n' << std::flush;
    FwImage content;
    const int status = readContent(named, line.image, content);
    return status == kExitSuccess ? restore(named, content, target) : status;
}

int restoreVerb(const Command& command)
{
    const bool isNamed = !command.line.image.empty();
    int status = kExitSuccess;
    FwImage content;
    if (isNamed) { // before a hub is asked for anything
        status = readContent(command, command.line.image, content);
        if (status != kExitSuccess) {
            return status;
        }
    }
    const std::optional<FlowTarget> target = chooseTarget(command, status);
    if (!target) {
        return status;
    }
    return isNamed ? restore(command, content, *target) : restoreNewest(command, *target);
}

const char* whyRestoreIsUnfit(const CommandLine& line)
{
    return isHubSource(line.image) ? "a hub cannot be restored from itself; a file called hub is "
                                     "./hub"
                                   : whyDryRunIsUnfit(line);
}

void addRestoreOptions(CLI::App& verb, CommandLine& line)
{
    addOperand(verb, "FILE", line.image, Operand::Optional,
               "A backup, or any content for the flash; -: standard input. Without it, the newest "
               "backup of the hub");
    addWriteOptions(verb, line);
}

} // namespace

const Verb kRestoreVerb = {
    .name = "restore",
    .summary = "Save the hub's flash, write a backup to it, verify it and restart the hub",
    .run = restoreVerb,
    .addOptions = addRestoreOptions,
    .whyUnfit = whyRestoreIsUnfit,
    .isFlow = true,
    .examples = "vornadelctl restore\nvornadelctl --path 2-3 restore before.bin\n",
};

} // namespace vornadel
