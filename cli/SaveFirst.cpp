#include "cli/SaveFirst.h"

#include "cli/Backups.h"
#include "cli/FlowTarget.h"
#include "cli/Verbs.h"
#include "hub/FlashGeometry.h"

#include <algorithm>
#include <string>

namespace vornadel
{

namespace
{

BeforeChange beforeChange(const Command& command, const BackupOwner& owner,
                          const WantedFlash& wanted, std::span<const std::uint8_t> flash)
{
    if (!command.line.alwaysWrite && holds(flash, wanted)) {
        command.out << wanted.alreadySo << '\n' << std::flush;
        return BeforeChange::UpToDate;
    }
    if (command.line.noBackup) {
        return BeforeChange::Go;
    }
    if (isBlank(flash)) {
        command.out << "The flash is blank, so there is nothing to save\n" << std::flush;
        return BeforeChange::Go;
    }
    std::string& file = command.result.backup;
    file = backupsOf(command.line, command.env)
               .save(owner, command.env.now(), flash, command.result.backupProblem);
    if (file.empty()) {
        return BeforeChange::NotSaved;
    }
    command.out << "Saved the old flash to " << file << '\n' << std::flush;
    return BeforeChange::Go;
}

} // namespace

bool isBlank(std::span<const std::uint8_t> flash)
{
    return std::all_of(flash.begin(), flash.end(),
                       [](std::uint8_t byte) { return byte == kFlashBlank; });
}

bool holds(std::span<const std::uint8_t> flash, const WantedFlash& wanted)
{
    const std::size_t size = wanted.begin.size();
    return size <= flash.size() &&
           std::equal(wanted.begin.begin(), wanted.begin.end(), flash.begin()) &&
           isBlank(flash.subspan(size));
}

int saveFirst(const Command& command, FlowTarget& target, const WantedFlash& wanted)
{
    const CommandLine& line = command.line;
    if (line.noBackup && line.alwaysWrite) {
        return kExitSuccess; // the flash need not be read
    }
    // Before the hub restarts and disconnects everything behind it.
    if (std::string problem; !line.noBackup && !backupsOf(line, command.env).canSave(problem)) {
        return fail(command, FailureId::BackupNotSaved, "no backup can be saved: " + problem);
    }
    target.options.beforeChange = [&command, owner = target.owner,
                                   wanted](std::span<const std::uint8_t> flash) {
        return beforeChange(command, owner, wanted, flash);
    };
    return kExitSuccess;
}

} // namespace vornadel
