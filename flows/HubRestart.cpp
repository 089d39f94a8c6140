#include "flows/HubRestart.h"

#include "flows/FlowRun.h"
#include "hub/HubCommands.h"

namespace vornadel
{

bool restartHub(std::uint8_t mode, FlowReporter& reporter, const FlowOptions& options)
{
    FlowRun run({FlowKind::Restart}, reporter, options);
    if (run.open()) {
        const bool intoRom = mode == HUB_MODE_ROM;
        if (intoRom ? run.restartIntoRom() : run.restart()) {
            run.runs(intoRom ? HubState::Rom : HubState::Flash);
        }
    }
    return run.end();
}

} // namespace vornadel
