#include "base/WholeFile.h"
#include "cli/ConsoleReporter.h"
#include "cli/FlowTarget.h"
#include "cli/Verbs.h"
#include "flows/FlashRead.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vornadel
{

namespace
{

bool save(const Command& command, const std::vector<std::uint8_t>& flash)
{
    const std::string& path = command.line.image;
    std::string problem;
    if (!saveWholeFile(path, flash, problem)) {
        command.err << "the flash was read but could not be saved: " << problem << '\n';
        return false;
    }
    command.out << "Saved " << flash.size() << " bytes to " << path << '\n' << std::flush;
    return true;
}

} // namespace

int readVerb(const Command& command)
{
    std::string problem;
    // Before the read, because a read restarts the hub and disconnects everything behind it.
    if (!canBeSaved(command.line.image, problem)) {
        command.err << "the flash was not read, because it could not be saved: " << problem << '\n';
        return kExitFailure;
    }
    int status = kExitSuccess;
    const std::optional<FlowTarget> target = chooseTarget(command, status);
    if (!target) {
        return status;
    }
    std::vector<std::uint8_t> flash;
    ConsoleReporter reporter(command.out, command.err, command.terminal, command.stop);
    readFlash(flash, reporter, target->options);
    // Also if only the last restart has failed.
    const bool lost = !flash.empty() && !save(command, flash);
    status = explainResult(command, FlowKind::Read, reporter.result(), *target);
    return lost ? kExitFailure : status;
}

} // namespace vornadel
