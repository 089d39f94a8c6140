#pragma once

#include "standins/virtual_hub/VirtualDevice.h"

#include <cstdint>

namespace vornadel::test
{

/// A half of hub 3 with its own ids, which refuses vendor requests.
inline VirtualDevice someDevice(HubSpeed half)
{
    return {3,
            half,
            0x1A2B,
            static_cast<std::uint16_t>(half == HubSpeed::SuperSpeed ? 0x3C4D : 0x3C4E),
            static_cast<std::uint16_t>(half == HubSpeed::SuperSpeed ? 0x3C4E : 0x3C4D),
            "sim-3",
            "SN0003",
            [](ControlRequest&) { return kSimulatedStall; },
            [] { return true; }};
}

} // namespace vornadel::test
