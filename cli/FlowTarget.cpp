#include "cli/FlowTarget.h"

#include "cli/DryRun.h"
#include "cli/HubChoices.h"
#include "cli/NextCommand.h"
#include "cli/Outcome.h"
#include "cli/ShownText.h"
#include "cli/Verbs.h"

#include <algorithm>
#include <vector>

namespace vornadel
{

namespace
{

/// What hangs below a hub, each once.
std::vector<std::string> devicesBelow(const AttachedHub& hub)
{
    std::vector<std::string> devices;
    for (const auto& half : hub.halves) {
        for (const std::string& device : half->attachedBelow()) {
            if (std::find(devices.begin(), devices.end(), device) == devices.end()) {
                devices.push_back(device);
            }
        }
    }
    return devices;
}

/// Returns the exit status.
int tellWhatIsInUse(const Command& command, const AttachedHub& hub)
{
    const std::vector<std::string> devices = devicesBelow(hub);
    if (devices.empty()) {
        return kExitSuccess;
    }
    std::string text = "in use: ";
    for (const std::string& device : devices) {
        text += printable(device) + "; ";
    }
    if (command.line.refuseInUse) {
        return fail(command, FailureId::InUse, text + "nothing was sent to the hub",
                    commandAgain(command, command.result.place, "--refuse-in-use"));
    }
    const bool one = devices.size() == 1;
    command.err << text << (one ? "it " : "they ") << (isDryRun(command.line) ? "would" : "will")
                << " be disconnected\n"
                << std::flush;
    return kExitSuccess;
}

} // namespace

std::optional<FlowTarget> chooseTarget(const Command& command, int& status)
{
    const std::optional<AttachedHub> hub = selectHub(command, status);
    if (!hub) {
        return {};
    }
    if (status = tellWhatIsInUse(command, *hub); status != kExitSuccess) {
        return {};
    }
    const std::string place = hub->place().text();
    return FlowTarget{
        place,
        {place, hub->texts().serialNumber},
        {.hub = {.place = hub->place(), .strict = true}, .stop = command.stop.flag()}};
}

int explainResult(const Command& command, FlowKind flow, const FlowResult& result,
                  const FlowTarget& target)
{
    if (result.succeeded()) {
        return kExitSuccess;
    }
    return fail(command, outcomeOf(flow, result,
                                   {target.place, result.owner, accessCommand(command.resourcePath),
                                    command.result.backupProblem}));
}

} // namespace vornadel
