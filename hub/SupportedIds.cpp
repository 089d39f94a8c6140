#include "hub/SupportedIds.h"

#include <algorithm>

namespace vornadel
{

std::array<SupportedIdEntry, kSupportedIdCount> SupportedIdList{};
std::uint16_t HubMakerVid = 0;

bool FindSupportedId(std::uint16_t vendorId, std::uint16_t productId)
{
    return std::any_of(SupportedIdList.begin(), SupportedIdList.end(),
                       [&](const SupportedIdEntry& entry) {
                           return entry.valid == 1 && entry.vid == vendorId &&
                                  (entry.sspid == productId || entry.hspid == productId);
                       });
}

bool AddSupportedIds(std::uint16_t vendorId, std::uint16_t superSpeedId, std::uint16_t highSpeedId)
{
    const auto free = std::find_if(SupportedIdList.begin(), SupportedIdList.end(),
                                   [](const SupportedIdEntry& entry) { return entry.valid != 1; });
    if (free == SupportedIdList.end()) {
        return false;
    }
    *free = {1, vendorId, superSpeedId, highSpeedId};
    return true;
}

bool FindSupportedTriple(std::uint16_t vendorId, std::uint16_t superSpeedId,
                         std::uint16_t highSpeedId)
{
    const SupportedIdEntry wanted{1, vendorId, superSpeedId, highSpeedId};
    return std::find(SupportedIdList.begin(), SupportedIdList.end(), wanted) !=
           SupportedIdList.end();
}

} // namespace vornadel
