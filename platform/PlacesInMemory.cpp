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
        std::erase_if(m_taken->places,
                      [this](const PlaceOwner& owner) { return owner.place == m_place; });
    }

private:
    std::shared_ptr<Taken> m_taken;
    std::string m_place;
};

std::unique_ptr<PlaceLock> PlacesInMemory::lock(const UsbPlace& place, UsbIds ids,
                                                PlaceOwner& owner)
{
    owner = {place.text()};
    const std::lock_guard lock(m_taken->mutex);
    if (std::any_of(m_taken->places.begin(), m_taken->places.end(),
                    [&](const PlaceOwner& other) { return other.place == owner.place; })) {
        return nullptr;
    }
    m_taken->places.push_back({owner.place, 0, ids});
    return std::make_unique<Lock>(m_taken, owner.place);
}

std::vector<PlaceOwner> PlacesInMemory::owners()
{
    const std::lock_guard lock(m_taken->mutex);
    return m_taken->places;
}

} // namespace vornadel
