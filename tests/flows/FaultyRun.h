#pragma once

#include "tests/flows/FaultTable.h"
#include "tests/support/SimulatedSetup.h"

#include <string>
#include <vector>

namespace vornadel::test
{

/// A hub that keeps its flash in memory and starts as told.
SimulatedHubOptions hubThatRuns(HubCode code, const std::vector<std::uint8_t>& flash = oldFlash());

/// One run of a flow. Expects what must hold whatever goes wrong: it ends in time, the hub is
/// closed, success means that the image is in the flash and the hub came back, and nothing was sent
/// before the first step was told.
struct FaultyRun {
    FaultyRun(const Flow& flow, SimulatedSetup& setup);

    bool succeeded = false;
    ToldValues told;
    std::string wire; ///< the requests that reached the hub, in the letters of an observer
};

/// Brings the hub back, on power and with nothing more to go wrong, and expects an update of it to
/// succeed.
void expectHealthyUpdate(SimulatedSetup& setup, unsigned opensStillRefused = 0);

} // namespace vornadel::test
