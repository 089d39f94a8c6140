#pragma once

#include "platform/Platform.h"
#include "platform/UsbBus.h"
#include "standins/sim/SimulatedHub.h"
#include "standins/sim/SimulatedLocks.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vornadel
{

/// A USB bus with simulated hubs on it, listed in the order of their numbers. Hub K is plugged into
/// the connector "sim-K". Events are delivered on the clock's thread, or on the
/// thread that sends the request or unplugs the hub. Searches and devices may outlive the bus, but
/// not the clock.
class SimulatedBus final : public UsbBus
{
public:
    /// One hub, or one for each element. Null and a sentence in `error` if a hub cannot be created.
    static std::unique_ptr<SimulatedBus> create(const SimulatedHubOptions& options, Clock& clock,
                                                std::string& error);
    static std::unique_ptr<SimulatedBus> create(const std::vector<SimulatedHubOptions>& options,
                                                Clock& clock, std::string& error);
    /// The same with options as written on a command line: see parseSimulatedHubs().
    static std::unique_ptr<SimulatedBus> create(std::string_view options, Clock& clock,
                                                std::string& error);
    ~SimulatedBus() override;

    std::unique_ptr<UsbSearch> search() override;
    bool watch(Listener listener) override;
    void unwatch() override;
    PlaceLocks& placeLocks() override { return m_locks; }

    SimulatedHub& hub(std::size_t number = 1) { return *m_hubs.at(number - 1); }
    std::size_t hubCount() const { return m_hubs.size(); }

    /// `machine` with this bus in place of its own. It may sleep: a simulated hub takes no harm.
    Platform replaceBusOf(const Platform& machine);

private:
    SimulatedBus(std::shared_ptr<Notifier> notifier,
                 std::vector<std::shared_ptr<SimulatedHub>> hubs);

    const std::shared_ptr<Notifier> m_notifier;
    const std::vector<std::shared_ptr<SimulatedHub>> m_hubs;
    SimulatedLocks m_locks;
};

} // namespace vornadel
