#include "cli/CommandReporter.h"
#include "cli/DryRun.h"
#include "cli/FlowTarget.h"
#include "cli/Options.h"
#include "cli/SaveFirst.h"
#include "cli/Verbs.h"
#include "flows/FlashErase.h"

#include <istream>
#include <string>

namespace vornadel
{

namespace
{

/// Asks on a terminal. Returns the exit status.
int mayErase(const Command& command, const FlowTarget& target)
{
    if (command.line.yes) {
        return kExitSuccess;
    }
    if (!command.env.inIsTerminal || !command.env.errIsTerminal || command.json()) {
        return fail(command, FailureId::NotAgreed, "erase asks first, and cannot ask here");
    }
    std::string answer;
    if (!command.stop.enter(StopRequest::Phase::Asking)) {
        command.err << "Erase the whole flash of the hub at " << target.place
                    << "? It has no firmware afterwards. [y/N] " << std::flush;
        std::getline(*command.env.in, answer);
    }
    command.stop.enter(StopRequest::Phase::NoFlow);
    return answer == "y" || answer == "Y" || answer == "yes"
               ? kExitSuccess
               : fail(command, FailureId::NotAgreed, "not erased");
}

int eraseVerb(const Command& command)
{
    int status = kExitSuccess;
    std::optional<FlowTarget> target = chooseTarget(command, status);
    if (!target) {
        return status;
    }
    const WantedFlash wanted{.alreadySo = "The flash is blank already"};
    if (isDryRun(command.line)) {
        return tellPlan(command, *target, {"", wanted});
    }
    if (status = mayErase(command, *target); status != kExitSuccess) {
        return status;
    }
    if (status = saveFirst(command, *target, wanted); status != kExitSuccess) {
        return status;
    }
    CommandReporter reporter(command);
    eraseFlash(reporter, target->options);
    return explainResult(command, FlowKind::Erase, reporter.result(), *target);
}

void addEraseOptions(CLI::App& verb, CommandLine& line)
{
    addFlag(verb, "-y,--yes", line.yes, "Do not ask; needed where no terminal is");
    addChangeOptions(verb, line);
}

} // namespace

const Verb kEraseVerb = {
    .name = "erase",
    .summary = "Save the hub's whole flash, erase it and restart the hub. Asks first",
    .run = eraseVerb,
    .addOptions = addEraseOptions,
    .whyUnfit = whyDryRunIsUnfit,
    .isFlow = true,
    .examples = "vornadelctl --path 2-3 erase\nvornadelctl erase --yes --backup-dir /var/backups\n",
};

} // namespace vornadel
