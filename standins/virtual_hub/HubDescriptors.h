#pragma once

#include "standins/virtual_hub/ByteOrder.h"
#include "standins/virtual_hub/VirtualDevice.h"

#include <cstdint>

namespace vornadel
{

inline constexpr unsigned kDownstreamPorts = 4;
inline constexpr std::uint8_t kStatusEndpoint = 0x81; ///< interrupt-IN, reports port changes
inline constexpr std::uint8_t kConfigurationValue = 1;

/// Descriptor types that GET_DESCRIPTOR asks for (high byte of wValue).
enum class DescriptorType : std::uint8_t {
    Device = 1,
    Configuration = 2,
    String = 3,
    Interface = 4,
    Endpoint = 5,
    DeviceQualifier = 6,
    OtherSpeedConfiguration = 7,
    BinaryObjectStore = 15,
    DeviceCapability = 16,
    HighSpeedHub = 0x29,
    SuperSpeedHub = 0x2A,
    EndpointCompanion = 0x30,
};

/// The whole descriptor, or for a configuration the whole set, of a hub (class 9) at its speed: USB
/// 3.0 for the SuperSpeed half, USB 2.1 with a single transaction translator for the high-speed
/// half. Empty if that half has no such descriptor. `index` is the low byte of wValue.
ByteBuffer standardDescriptor(const VirtualDevice& device, std::uint8_t type, std::uint8_t index);

/// The hub-class descriptor: type 0x2A (12 bytes) on the SuperSpeed half, 0x29 (9 bytes) on the
/// other; empty for another type.
ByteBuffer hubDescriptor(HubSpeed half, std::uint8_t type);

} // namespace vornadel
