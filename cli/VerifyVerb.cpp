#include "cli/Backups.h"
#include "cli/CommandReporter.h"
#include "cli/FlowTarget.h"
#include "cli/Options.h"
#include "cli/Verbs.h"
#include "flows/FlashVerify.h"
#include "hub/FlashGeometry.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vornadel
{

namespace
{

int verifyVerb(const Command& command)
{
    const std::string& name = command.line.image;
    std::vector<std::uint8_t> image;
    std::string problem;
    if (!readBackup(name, image, problem)) {
        return fail(command, FailureId::ImageUnreadable, problem);
    }
    if (image.size() > kFlashSize) {
        return fail(command, FailureId::ImageRefused,
                    name + ": it has " + std::to_string(image.size()) +
                        " bytes, more than the hub's flash (" + std::to_string(kFlashSize) + ')');
    }
    int status = kExitSuccess;
    const std::optional<FlowTarget> target = chooseTarget(command, status);
    if (!target) {
        return status;
    }
    std::vector<std::uint8_t> flash;
    CommandReporter reporter(command);
    verifyFlash(image, name, flash, reporter, target->options);
    return explainResult(command, FlowKind::Verify, reporter.result(), *target);
}

void addVerifyOptions(CLI::App& verb, CommandLine& line)
{
    addOperand(verb, "IMAGE", line.image, Operand::Required,
               "What the flash should hold: a firmware image or a backup");
    addRefuseInUse(verb, line);
}

} // namespace

const Verb kVerifyVerb = {
    .name = "verify",
    .summary = "Read the hub's flash, compare it with an image and restart the hub. Nothing is "
               "changed",
    .run = verifyVerb,
    .addOptions = addVerifyOptions,
    .isFlow = true,
    .examples = "vornadelctl verify new.bin\n",
};

} // namespace vornadel
