#pragma once

#include "standins/sim/SimulatedHub.h"

#include <cstdint>
#include <ostream>
#include <vector>

namespace vornadel::test
{

/// One request as sent on the wire, including the data stage of an OUT request.
struct WireRequest {
    std::uint8_t bmRequestType;
    std::uint8_t bRequest;
    std::uint16_t wValue;
    std::uint16_t wIndex;
    std::uint16_t wLength;
    std::vector<std::uint8_t> out;

    bool operator==(const WireRequest&) const = default;
};

inline void PrintTo(const WireRequest& request, std::ostream* stream)
{
    *stream << std::hex << unsigned{request.bmRequestType} << ' ' << unsigned{request.bRequest}
            << ' ' << request.wValue << ' ' << request.wIndex << ' ' << request.wLength << " +"
            << std::dec << request.out.size();
}

/// Records every request that reaches the hub from now on. The list must outlive the last request.
inline void keepRequests(SimulatedHub& hub, std::vector<WireRequest>& wire)
{
    hub.onRequest = [&wire](const ControlRequest& request) {
        wire.push_back({request.bmRequestType,
                        request.bRequest,
                        request.wValue,
                        request.wIndex,
                        request.wLength(),
                        {request.out.begin(), request.out.end()}});
    };
}

} // namespace vornadel::test
