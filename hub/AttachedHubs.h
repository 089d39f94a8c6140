#pragma once

#include "platform/UsbBus.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace vornadel
{

/// A supported hub on the bus. Usually it is there as two devices, one per speed.
struct AttachedHub {
    std::vector<std::unique_ptr<UsbDevice>> halves{}; ///< one or two, in the bus's order; not open
    std::uint16_t vendorId{};
    std::uint16_t superSpeedId{}; ///< 0 without that half
    std::uint16_t highSpeedId{};  ///< 0 without that half

    UsbPlace place() const { return halves.front()->place(); }
    /// Of the first half that says something.
    UsbTexts texts() const;
};

/// The supported hubs, in the bus's order, without opening them. Two devices are one hub if they
/// are at the same connector or, on a platform that tells no second port, if they are the only two
/// of one supported triple of ids. Nothing if the platform gives no list.
std::optional<std::vector<AttachedHub>> Hub_ListHubs(UsbBus& bus);

} // namespace vornadel
