#pragma once

#include "platform/UsbPlace.h"

#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace vornadel
{

/// The locks of places within one process. Locks may outlive it.
class PlacesInMemory final : public PlaceLocks
{
public:
    std::unique_ptr<PlaceLock> lock(const UsbPlace& place, UsbIds ids, PlaceOwner& owner) override;
    std::vector<PlaceOwner> owners() override;

private:
    class Lock;
    struct Taken {
        std::mutex mutex;
        std::vector<PlaceOwner> places;
    };

    std::shared_ptr<Taken> m_taken = std::make_shared<Taken>();
};

} // namespace vornadel
