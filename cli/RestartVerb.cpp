#include "cli/CommandReporter.h"
#include "cli/FlowTarget.h"
#include "cli/Options.h"
#include "cli/Verbs.h"
#include "flows/HubRestart.h"
#include "hub/HubCommands.h"

namespace vornadel
{

namespace
{

int restartVerb(const Command& command)
{
    int status = kExitSuccess;
    const std::optional<FlowTarget> target = chooseTarget(command, status);
    if (!target) {
        return status;
    }
    CommandReporter reporter(command);
    restartHub(command.line.rom ? HUB_MODE_ROM : HUB_MODE_FLASH, reporter, target->options);
    return explainResult(command, FlowKind::Restart, reporter.result(), *target);
}

void addRestartOptions(CLI::App& verb, CommandLine& line)
{
    addFlag(verb, "--rom", line.rom, "Into its ROM code, in which it stays until the next restart");
    addRefuseInUse(verb, line);
}

} // namespace

const Verb kRestartVerb = {
    .name = "restart",
    .summary = "Restart the hub into the firmware in its flash",
    .run = restartVerb,
    .addOptions = addRestartOptions,
    .isFlow = true,
    .examples = "vornadelctl restart\nvornadelctl --path 2-3 restart --rom\n",
};

} // namespace vornadel
