#pragma once

#include "platform/UsbPlace.h"

#include <cstdint>
#include <optional>
#include <string>

namespace vornadel
{

/// Which of the attached hubs to work on. Everything given must apply; nothing given: any hub.
struct HubSelector {
    std::string path{};         ///< one of its ports, or both as `list` prints them
    std::string serialNumber{}; ///< the whole text
    std::string containerId{};  ///< "{8-4-4-4-12}", lower-case hex digits
    std::optional<UsbIds> id{}; ///< of either half

    bool isGiven() const
    {
        return !path.empty() || !serialNumber.empty() || !containerId.empty() || id.has_value();
    }
};

/// Whether a text looks like a place: "2-3", "2-1.4", or a pair "2-3/1-3".
bool isPath(const std::string& text);

/// A Container ID, with or without braces, in any case, as HubSelector keeps it. Empty if the text
/// is none.
std::string containerIdIn(const std::string& text);

/// "VID:PID" in hex.
std::optional<UsbIds> idsIn(const std::string& text);

} // namespace vornadel
