#pragma once

#include "platform/PlacesInMemory.h"
#include "platform/Platform.h"
#include "platform/UsbBus.h"
#include "standins/sim/SimulatedHub.h"

#include <memory>
#include <string>
#include <string_view>

namespace vornadel
{

/// A USB bus with one simulated hub on it. Events are delivered on the clock's thread, or on the
/// thread that sends the request or unplugs the hub. Searches and devices may outlive the bus, but
/// not the clock.
class SimulatedBus final : public UsbBus
{
public:
    /// Null and a sentence in `error` if the hub cannot be created.
    static std::unique_ptr<SimulatedBus> create(const SimulatedHubOptions& options, Clock& clock,
                                                std::string& error);
    /// The same with options as written on a command line.
    static std::unique_ptr<SimulatedBus> create(std::string_view options, Clock& clock,
                                                std::string& error);
    ~SimulatedBus() override;

    std::unique_ptr<UsbSearch> search() override;
    bool watch(Listener listener) override;
    void unwatch() override;
    PlaceLocks& placeLocks() override { return m_locks; }

    SimulatedHub& hub() { return *m_hub; }

    /// `machine` with this bus in place of its own.
    Platform replaceBusOf(const Platform& machine);

private:
    explicit SimulatedBus(std::shared_ptr<SimulatedHub> hub);

    std::shared_ptr<SimulatedHub> m_hub;
    PlacesInMemory m_locks;
};

} // namespace vornadel
