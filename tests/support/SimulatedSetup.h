#pragma once

#include "hub/HubTransport.h"
#include "hub/SupportedIds.h"
#include "standins/sim/DemoImage.h"
#include "standins/sim/SimulatedBus.h"
#include "tests/support/HubGuard.h"
#include "tests/support/VirtualClock.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace vornadel::test
{

/// The hub room on a simulated hub, with virtual time. Fails the test if it leaves the hub open.
class HubSetup
{
public:
    explicit HubSetup(const SimulatedHubOptions& options)
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
            bus->hub().onRequest = nullptr;
            static_cast<void>(bus.release());
            static_cast<void>(m_clock.release());
        }
    }

    SimulatedHub& hub() { return bus->hub(); }

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
    explicit SimulatedSetup(const SimulatedHubOptions& options = {}) : HubSetup(quick(options)) {}

private:
    static SimulatedHubOptions quick(SimulatedHubOptions options)
    {
        options.keepInMemory = true;
        options.latency = SimulatedLatency::None;
        return options;
    }
};

} // namespace vornadel::test
