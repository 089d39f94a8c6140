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

AttachedHub hubOf(std::unique_ptr<UsbDevice> half)
{
    AttachedHub hub;
    hub.vendorId = half->vendorId();
    const std::uint16_t productId = half->productId();
    (isSuperSpeedId(hub.vendorId, productId) ? hub.superSpeedId : hub.highSpeedId) = productId;
    hub.halves.push_back(std::move(half));
    return hub;
}

/// Whether only the ids can tell which other half belongs to this one.
bool isLoneHalf(const AttachedHub& hub)
{
    return hub.halves.size() == 1 && hub.place().other.path.empty();
}

/// Whether these can only be the two halves of one hub by their ids.
bool areHalvesOfOne(const std::vector<AttachedHub>& hubs)
{
    if (hubs.size() != 2) {
        return false;
    }
    const AttachedHub& hub = hubs.front();
    const AttachedHub& other = hubs.back();
    return isLoneHalf(hub) && isLoneHalf(other) && hub.vendorId == other.vendorId &&
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
            return hub.place().isSameConnector(half.place());
        });
        if (same != hubs.end()) {
            join(*same, std::move(half));
        } else {
            hubs.push_back(std::move(half));
        }
    }
    search->release();
    if (areHalvesOfOne(hubs)) {
        join(hubs[0], std::move(hubs[1]));
        hubs.pop_back();
    }
    return hubs;
}

} // namespace vornadel
