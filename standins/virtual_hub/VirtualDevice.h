#pragma once

#include "platform/UsbBus.h"
#include "standins/sim/SimulatedHub.h"

#include <cstdint>
#include <functional>
#include <string>

namespace vornadel
{

/// One half of a hub during one session on the bus: everything needed to attach it.
struct VirtualDevice {
    unsigned hub = 1; ///< which hub, counted from 1
    HubSpeed half = HubSpeed::SuperSpeed;
    std::uint16_t vendorId = 0;
    std::uint16_t productId = 0;
    std::uint16_t otherProductId = 0; ///< of the half at the other speed
    std::string place{};              ///< the connector, see AttachedHalf
    std::string serialNumber{};       ///< of the image in the flash; a made-up one without

    /// Performs a vendor request like SimulatedHub::control(), with the same statuses. Called on
    /// the thread that serves the device; may block for as long as the hub takes.
    std::function<std::uint32_t(ControlRequest&)> vendorRequest;
    /// Whether the session still lasts. Any thread.
    std::function<bool()> present;
};

/// The number that USB/IP and the kernel use for a speed.
inline std::uint32_t speedNumber(HubSpeed half) { return half == HubSpeed::SuperSpeed ? 5 : 3; }

/// The number of a device on its USB/IP connection: bus in the upper half, device in the lower.
inline std::uint32_t deviceNumber(const VirtualDevice& device)
{
    return ((device.half == HubSpeed::SuperSpeed ? 2U : 1U) << 16) | device.hub;
}

} // namespace vornadel
