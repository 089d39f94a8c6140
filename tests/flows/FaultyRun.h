#pragma once

#include "tests/flows/FaultTable.h"
#include "tests/support/SimulatedSetup.h"

#include <string>
#include <vector>

namespace vornadel::test
{

/// A hub with its flash in memory, which starts with this code.
SimulatedHubOptions hubThatRuns(HubCode code, const std::vector<std::uint8_t>& flash = oldFlash());

/// Runs a flow and checks what must hold with every fault: it ends in time, the hub is closed,
/// success means that the image is in the flash and the hub came back, and nothing was sent before
/// the first step was reported.
struct FaultyRun {
    FaultyRun(const Flow& flow, SimulatedSetup& setup);

    bool succeeded = false;
    ToldValues told;
    std::string wire; ///< the requests that reached the hub, in the letters of an observer
};

/// Powers the hub up again, and lets it refuse the rest of the opens.
void powerUp(SimulatedSetup& setup, unsigned opensStillRefused = 0);

/// The same, and expects an update to succeed then.
void expectHealthyUpdate(SimulatedSetup& setup, unsigned opensStillRefused = 0);

} // namespace vornadel::test
