#include "platform/PlacesInMemory.h"

#include <algorithm>
#include <utility>

namespace vornadel
{

class PlacesInMemory::Lock final : public PlaceLock
{
public:
    Lock(std::shared_ptr<Taken> taken, std::string place)
        : m_taken(std::move(taken)), m_place(std::move(place))
    {
    }
    ~Lock() override
    {
        const std::lock_guard lock(m_taken->mutex);
        std::erase(m_taken->places, m_place);
    }

private:
    std::shared_ptr<Taken> m_taken;
    std::string m_place;
};

std::unique_ptr<PlaceLock> PlacesInMemory::lock(const UsbPlace& place, PlaceOwner& owner)
{
    const std::string name = place.text();
    const std::lock_guard lock(m_taken->mutex);
    if (std::find(m_taken->places.begin(), m_taken->places.end(), name) != m_taken->places.end()) {
        owner = {name};
        return nullptr;
    }
    m_taken->places.push_back(name);
    return std::make_unique<Lock>(m_taken, name);
}

std::vector<PlaceOwner> PlacesInMemory::owners()
{
    const std::lock_guard lock(m_taken->mutex);
    std::vector<PlaceOwner> owners;
    for (const std::string& place : m_taken->places) {
        owners.push_back({place});
    }
    return owners;
}

} // namespace vornadel
