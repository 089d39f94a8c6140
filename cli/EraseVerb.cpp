#include "cli/CommandReporter.h"
#include "cli/FlowTarget.h"
#include "cli/Options.h"
#include "cli/Verbs.h"
#include "flows/FlashErase.h"

namespace vornadel
{

namespace
{

int eraseVerb(const Command& command)
{
    int status = kExitSuccess;
    const std::optional<FlowTarget> target = chooseTarget(command, status);
    if (!target) {
        return status;
    }
    CommandReporter reporter(command);
    eraseFlash(reporter, target->options);
    return explainResult(command, FlowKind::Erase, reporter.result(), *target);
}

} // namespace

const Verb kEraseVerb = {
    .name = "erase",
    .summary = "Erase the hub's whole flash, without asking, and restart the hub",
    .run = eraseVerb,
    .addOptions = addRefuseInUse,
    .isFlow = true,
    .examples = "vornadelctl --path 2-3 erase\n",
};

} // namespace vornadel
