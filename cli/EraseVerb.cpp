#include "cli/ConsoleReporter.h"
#include "cli/FlowTarget.h"
#include "cli/Verbs.h"
#include "flows/FlashErase.h"

namespace vornadel
{

int eraseVerb(const Command& command)
{
    int status = kExitSuccess;
    const std::optional<FlowTarget> target = chooseTarget(command, status);
    if (!target) {
        return status;
    }
    ConsoleReporter reporter(command.out, command.err, command.terminal, command.stop);
    eraseFlash(reporter, target->options);
    return explainResult(command, FlowKind::Erase, reporter.result(), *target);
}

} // namespace vornadel
