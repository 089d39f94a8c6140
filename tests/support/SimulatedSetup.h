#pragma once

#include "hub/HubTransport.h"
#include "hub/SupportedIds.h"
#include "standins/sim/DemoImage.h"
#include "standins/sim/SimulatedBus.h"
#include "tests/support/HubGuard.h"
#include "tests/support/VirtualClock.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace vornadel::test
{

/// The hub room on a bus of simulated hubs, with virtual time. Fails the test if it leaves the hub
/// open.
class HubSetup
{
public:
    explicit HubSetup(const SimulatedHubOptions& options) : HubSetup(std::vector{options}) {}
    explicit HubSetup(const std::vector<SimulatedHubOptions>& options)
    {
        std::string error;
        bus = SimulatedBus::create(options, clock, error);
        EXPECT_TRUE(bus) << error;
        SupportedIdList.fill({});
        SupportedIdList.at(0) = {1, 0x1209, 0x0001, 0x0002};
        Hub_UsePlatform(*bus, clock);
    }
    HubSetup(const HubSetup&) = delete;
    HubSetup& operator=(const HubSetup&) = delete;
    ~HubSetup()
    {
        if (!hubIsClosed()) {
            for (std::size_t number = 1; number <= bus->hubCount(); ++number) {
                bus->hub(number).onRequest = nullptr;
            }
            static_cast<void>(bus.release());
            static_cast<void>(m_clock.release());
        }
    }

    SimulatedHub& hub(std::size_t number = 1) { return bus->hub(number); }

private:
    std::unique_ptr<VirtualClock> m_clock = std::make_unique<VirtualClock>();

public:
    VirtualClock& clock = *m_clock;
    std::unique_ptr<SimulatedBus> bus;
};

/// The same with a flash in memory and no latency.
class SimulatedSetup : public HubSetup
{
public:
    explicit SimulatedSetup(const SimulatedHubOptions& options = {})
        : SimulatedSetup(std::vector{options})
    {
    }
    explicit SimulatedSetup(std::vector<SimulatedHubOptions> options)
        : HubSetup(quick(std::move(options)))
    {
    }

private:
    static std::vector<SimulatedHubOptions> quick(std::vector<SimulatedHubOptions> options)
    {
        for (SimulatedHubOptions& hub : options) {
            hub.keepInMemory = true;
            hub.latency = SimulatedLatency::None;
        }
        return options;
    }
};

} // namespace vornadel::test
