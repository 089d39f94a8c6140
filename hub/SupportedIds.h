#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace vornadel
{

/// The ids of one supported hub. A USB 3 hub is two devices, one per speed, with one vendor id.
struct SupportedIdEntry {
    std::uint16_t valid{}; ///< 1 if the entry is used for matching
    std::uint16_t vid{};   ///< USB vendor id
    std::uint16_t sspid{}; ///< SuperSpeed product id
    std::uint16_t hspid{}; ///< high-speed product id

    bool operator==(const SupportedIdEntry&) const = default;
};

inline constexpr std::size_t kSupportedIdCount = 64;

/// The supported hubs, by the index of their configuration keys. Written before the first flow, by
/// the thread that starts it; only read afterwards, from any thread.
extern std::array<SupportedIdEntry, kSupportedIdCount> SupportedIdList;

/// The hub maker's vendor id, sent in the open-time request; 0 means the one the program was built
/// with. Same rules for writing and reading as for the list.
extern std::uint16_t HubMakerVid;

/// Whether a device is a supported hub, at either speed.
bool FindSupportedId(std::uint16_t vendorId, std::uint16_t productId);

/// Makes a hub supported for the rest of the run, in the first free entry. False if there is none.
bool AddSupportedIds(std::uint16_t vendorId, std::uint16_t superSpeedId, std::uint16_t highSpeedId);

/// Whether one and the same entry has all three ids.
bool FindSupportedTriple(std::uint16_t vendorId, std::uint16_t superSpeedId,
                         std::uint16_t highSpeedId);

} // namespace vornadel
