#pragma once

#include "tests/flows/FaultTable.h"
#include "tests/support/SimulatedSetup.h"

#include <string>

namespace vornadel::test
{

/// What a sweep has come to. It is printed and held against what the table of the flows makes of
/// it.
class SweepCount
{
public:
    void ran() { ++m_runs; }
    void fired(unsigned faults) { m_fired += faults; }
    void expect(std::size_t runs, std::size_t fired) const;

private:
    unsigned m_runs = 0;
    unsigned m_fired = 0;
};

/// A hub that keeps its flash in memory and starts as told.
SimulatedHubOptions hubThatRuns(HubCode code, const std::vector<std::uint8_t>& flash = oldFlash());

/// One run of a flow. Expects what must hold whatever goes wrong: it ends in time, the hub is
/// closed, success means that the image is in the flash and the hub came back, and nothing was sent
/// before the image was accepted and its line told.
struct FlowRun {
    FlowRun(const Flow& flow, SimulatedSetup& setup);

    bool succeeded = false;
    RecordingReporter told;
    std::string wire; ///< the requests that reached the hub, in the letters of an observer
};

/// Brings the hub back, on power and with nothing more to go wrong, and expects an update of it to
/// succeed.
void expectHealthyUpdate(SimulatedSetup& setup, unsigned opensStillRefused = 0);

} // namespace vornadel::test
