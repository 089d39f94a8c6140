#pragma once

#include "hub/HubTransport.h"
#include "hub/SupportedIds.h"
#include "standins/sim/DemoImage.h"
#include "standins/sim/SimulatedBus.h"
#include "tests/support/VirtualClock.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace vornadel::test
{

/// The hub room on a simulated hub with its flash in memory, and virtual time.
class SimulatedSetup
{
public:
    explicit SimulatedSetup(SimulatedHubOptions options = {})
    {
        options.keepInMemory = true;
        options.latency = SimulatedLatency::None;
        std::string error;
        bus = SimulatedBus::create(options, clock, error);
        SupportedIdList.fill({});
        SupportedIdList.at(0) = {1, 0x1209, 0x0001, 0x0002};
        Hub_UsePlatform(*bus, clock);
    }

    SimulatedHub& hub() { return bus->hub(); }

    VirtualClock clock;
    std::unique_ptr<SimulatedBus> bus;
};

} // namespace vornadel::test
