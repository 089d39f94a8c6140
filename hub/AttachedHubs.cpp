#include "hub/AttachedHubs.h"

#include "hub/HubSearch.h"
#include "hub/SupportedIds.h"

#include <algorithm>
#include <utility>

namespace vornadel
{

namespace
{

bool isSuperSpeedId(std::uint16_t vendorId, std::uint16_t productId)
{
    return std::any_of(
        SupportedIdList.begin(), SupportedIdList.end(), [&](const SupportedIdEntry& entry) {
            return entry.valid == 1 && entry.vid == vendorId && entry.sspid == productId;
        });
}

bool tellsItsConnector(const UsbPlace& place) { return place.known() && !place.other.path.empty(); }

AttachedHub hubOf(std::unique_ptr<UsbDevice> half)
{
    AttachedHub hub;
    hub.vendorId = half->vendorId();
    const std::uint16_t productId = half->productId();
    (isSuperSpeedId(hub.vendorId, productId) ? hub.superSpeedId : hub.highSpeedId) = productId;
    hub.halves.push_back(std::move(half));
    return hub;
}

bool isSameConnector(const AttachedHub& hub, const AttachedHub& other)
{
    return hub.place().isSameConnector(other.place());
}

/// Whether the two can only be one hub's halves by their ids.
bool completes(const AttachedHub& hub, const AttachedHub& other)
{
    return hub.halves.size() == 1 && other.halves.size() == 1 && !tellsItsConnector(hub.place()) &&
           !tellsItsConnector(other.place()) && !isSameConnector(hub, other) &&
           hub.vendorId == other.vendorId &&
           FindSupportedTriple(hub.vendorId, hub.superSpeedId | other.superSpeedId,
                               hub.highSpeedId | other.highSpeedId);
}

void join(AttachedHub& hub, AttachedHub&& half)
{
    const std::uint16_t productId = half.halves.front()->productId();
    (hub.superSpeedId == 0 ? hub.superSpeedId : hub.highSpeedId) = productId;
    hub.halves.push_back(std::move(half.halves.front()));
}

} // namespace

UsbTexts AttachedHub::texts() const
{
    for (const auto& half : halves) {
        UsbTexts texts = half->texts();
        if (!texts.product.empty() || !texts.serialNumber.empty()) {
            return texts;
        }
    }
    return {};
}

std::optional<std::vector<AttachedHub>> Hub_ListHubs(UsbBus& bus)
{
    const std::unique_ptr<UsbSearch> search = bus.search();
    if (!search) {
        return std::nullopt;
    }
    std::vector<AttachedHub> hubs;
    while (std::unique_ptr<UsbDevice> device = nextSupportedDevice(*search)) {
        AttachedHub half = hubOf(std::move(device));
        const auto same = std::find_if(hubs.begin(), hubs.end(), [&](const AttachedHub& hub) {
            return isSameConnector(hub, half);
        });
        if (same != hubs.end()) {
            join(*same, std::move(half));
        } else {
            hubs.push_back(std::move(half));
        }
    }
    search->release();
    if (hubs.size() == 2 && completes(hubs[0], hubs[1])) {
        join(hubs[0], std::move(hubs[1]));
        hubs.pop_back();
    }
    return hubs;
}

} // namespace vornadel
