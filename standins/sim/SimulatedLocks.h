#pragma once

#include "platform/UsbPlace.h"
#include "standins/sim/SimulatedHub.h"

#include <memory>
#include <vector>

namespace vornadel
{

/// The locks of the simulated hubs' places. Programs that share a hub's flash file share its lock;
/// the lock of a hub in memory is known to its bus only. Locks may outlive this object.
class SimulatedLocks final : public PlaceLocks
{
public:
    explicit SimulatedLocks(const std::vector<std::shared_ptr<SimulatedHub>>& hubs) : m_hubs(hubs)
    {
    }

    std::unique_ptr<PlaceLock> lock(const UsbPlace& place, UsbIds ids, PlaceOwner& owner) override;
    std::vector<PlaceOwner> owners() override;

private:
    const std::vector<std::shared_ptr<SimulatedHub>>& m_hubs;
};

} // namespace vornadel
