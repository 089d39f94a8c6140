#pragma once

#include "platform/UsbPlace.h"

#include <algorithm>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace vornadel::test
{

/// The locks of places within one process. Locks may outlive it.
class PlacesInMemory final : public PlaceLocks
{
public:
    std::unique_ptr<PlaceLock> lock(const UsbPlace& place, UsbIds ids, PlaceOwner& owner) override
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

    std::vector<PlaceOwner> owners() override
    {
        const std::lock_guard lock(m_taken->mutex);
        return m_taken->places;
    }

private:
    struct Taken {
        std::mutex mutex;
        std::vector<PlaceOwner> places;
    };

    class Lock final : public PlaceLock
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

    std::shared_ptr<Taken> m_taken = std::make_shared<Taken>();
};

} // namespace vornadel::test
