#include "cli/FlowTarget.h"

#include "cli/HubChoices.h"
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

/// False if that keeps the flow from its work.
bool tellWhatIsInUse(const Command& command, const AttachedHub& hub)
{
    const std::vector<std::string> devices = devicesBelow(hub);
    if (devices.empty()) {
        return true;
    }
    const bool one = devices.size() == 1;
    std::string text = "in use: ";
    for (const std::string& device : devices) {
        text += printable(device) + "; ";
    }
    command.err << text
                << (command.line.refuseInUse ? "nothing was sent to the hub"
                    : one                    ? "it will be disconnected"
                                             : "they will be disconnected")
                << '\n'
                << std::flush;
    return !command.line.refuseInUse;
}

} // namespace

std::optional<FlowTarget> chooseTarget(const Command& command, int& status)
{
    const std::optional<AttachedHub> hub = selectHub(command, status);
    if (!hub) {
        return {};
    }
    if (!tellWhatIsInUse(command, *hub)) {
        status = kExitFailure;
        return {};
    }
    return FlowTarget{
        hub->place().text(),
        {.hub = {.place = hub->place(), .strict = true}, .stop = command.stop.flag()}};
}

int explainResult(const Command& command, FlowKind flow, const FlowResult& result,
                  const FlowTarget& target)
{
    const Outcome outcome =
        outcomeOf(flow, result, {target.place, result.owner, accessCommand(command.resourcePath)});
    if (!outcome.text.empty()) {
        command.err << outcome.text << '\n' << std::flush;
    }
    return outcome.status;
}

} // namespace vornadel
