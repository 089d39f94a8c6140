#include "base/WholeFile.h"
#include "cli/ConsoleReporter.h"
#include "cli/Verbs.h"
#include "flows/FlashRead.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vornadel
{

int readVerb(const Command& command)
{
    const std::string& path = command.line.image;
    std::string problem;
    // Before the read, because a read restarts the hub and disconnects everything behind it.
    if (!canBeSaved(path, problem)) {
        command.err << "the flash was not read, because it could not be saved: " << problem << '\n';
        return kExitFailure;
    }
    std::vector<std::uint8_t> flash;
    ConsoleReporter reporter(command.out, command.err, command.terminal);
    if (!readFlash(flash, reporter)) {
        return kExitFailure;
    }
    if (!saveWholeFile(path, flash, problem)) {
        command.err << "the flash was read but could not be saved: " << problem << '\n';
        return kExitFailure;
    }
    command.out << "Saved " << flash.size() << " bytes to " << path << '\n' << std::flush;
    return kExitSuccess;
}

} // namespace vornadel
