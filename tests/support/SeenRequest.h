#pragma once

#include "platform/UsbBus.h"

#include <array>
#include <cstdint>
#include <vector>

namespace vornadel::test
{

/// One request that reached the bus.
struct SeenRequest {
    std::array<std::uint8_t, 8> setup{}; ///< the setup packet on the wire, words little-endian
    std::vector<std::uint8_t> sent{};    ///< the data stage of a request to the device

    bool operator==(const SeenRequest&) const = default;
};

inline SeenRequest seenOf(const ControlRequest& request)
{
    const auto low = [](std::uint16_t word) { return static_cast<std::uint8_t>(word & 0xFF); };
    const auto high = [](std::uint16_t word) { return static_cast<std::uint8_t>(word >> 8); };
    SeenRequest seen;
    seen.setup = {request.bmRequestType,  request.bRequest,       low(request.wValue),
                  high(request.wValue),   low(request.wIndex),    high(request.wIndex),
                  low(request.wLength()), high(request.wLength())};
    seen.sent.assign(request.out.begin(), request.out.end());
    return seen;
}

} // namespace vornadel::test
