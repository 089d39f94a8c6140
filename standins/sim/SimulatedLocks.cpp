#include "standins/sim/SimulatedLocks.h"

#include <algorithm>
#include <utility>

namespace vornadel
{

namespace
{

class Lock final : public PlaceLock
{
public:
    explicit Lock(std::shared_ptr<SimulatedHub> hub) : m_hub(std::move(hub)) {}
    ~Lock() override { m_hub->giveBack(); }

private:
    const std::shared_ptr<SimulatedHub> m_hub;
};

} // namespace

std::unique_ptr<PlaceLock> SimulatedLocks::lock(const UsbPlace& place, UsbIds /*ids*/,
                                                PlaceOwner& owner)
{
    owner = {place.text()};
    const auto hub = std::find_if(m_hubs.begin(), m_hubs.end(), [&](const auto& candidate) {
        return candidate->place() == place.own.path;
    });
    if (hub == m_hubs.end() || !(*hub)->reserve(owner.processId)) {
        return nullptr;
    }
    return std::make_unique<Lock>(*hub);
}

std::vector<PlaceOwner> SimulatedLocks::owners()
{
    std::vector<PlaceOwner> owners;
    for (const std::shared_ptr<SimulatedHub>& hub : m_hubs) {
        if (const std::int64_t process = hub->owner(); process != 0) {
            owners.push_back({hub->place(), process});
        }
    }
    return owners;
}

} // namespace vornadel
