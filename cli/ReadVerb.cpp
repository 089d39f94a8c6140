#include "cli/CommandReporter.h"
#include "cli/FlowTarget.h"
#include "cli/Options.h"
#include "cli/OutputFile.h"
#include "cli/SaveFirst.h"
#include "cli/Verbs.h"
#include "flows/FlashRead.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vornadel
{

namespace
{

/// Returns the exit status.
int save(const Command& command, const std::vector<std::uint8_t>& flash)
{
    const std::string& path = command.line.image;
    std::string problem;
    if (!writeOutput(command, path, flash, problem)) {
        return fail(command, FailureId::FileNotSaved,
                    "the flash was read but could not be saved: " + problem);
    }
    command.out << "Saved " << flash.size() << " bytes to "
                << (isStandardOutput(path) ? "standard output" : path) << '\n'
                << std::flush;
    if (isBlank(flash)) {
        command.err << "The flash is blank: every byte is FF, so there is no firmware in it\n"
                    << std::flush;
    }
    return kExitSuccess;
}

int readVerb(const Command& command)
{
    // Before the read, because a read restarts the hub and disconnects everything behind it.
    int status = checkOutput(command, command.line.image,
                             "the flash was not read, because it could not be saved: ");
    if (status != kExitSuccess) {
        return status;
    }
    const std::optional<FlowTarget> target = chooseTarget(command, status);
    if (!target) {
        return status;
    }
    std::vector<std::uint8_t> flash;
    CommandReporter reporter(command);
    readFlash(flash, reporter, target->options);
    // Also if only the last restart has failed.
    const int saved = flash.empty() ? kExitSuccess : save(command, flash);
    status = explainResult(command, FlowKind::Read, reporter.result(), *target);
    return saved == kExitSuccess ? status : saved;
}

void addReadOptions(CLI::App& verb, CommandLine& line)
{
    addOperand(verb, "FILE", line.image, Operand::Required,
               "Where to save it (*.bin); -: to standard output");
    addFlag(verb, "--force", line.force, "Replace a file that exists");
    addRefuseInUse(verb, line);
}

} // namespace

const Verb kReadVerb = {
    .name = "read",
    .summary = "Read the hub's whole flash, save it to a file and restart the hub. If anything "
               "fails, an existing file stays as it is",
    .run = readVerb,
    .addOptions = addReadOptions,
    .isFlow = true,
    .output = &CommandLine::image,
    .examples = "vornadelctl read before.bin\n",
};

} // namespace vornadel
