#pragma once

#include <cstdint>

namespace vornadel
{

/// What is known about the hub on the bus. Without a hub the version is meaningless.
struct HubDetection {
    bool found = false; ///< a supported hub is attached
    /// 65535 if the hub could not be opened, for example because a flow has it open; 0 if it was
    /// opened but its status block could not be read; otherwise the hub's version.
    std::uint16_t version = 65535;
};

/// Looks for a supported hub and reads its firmware version. Leaves the hub closed unless another
/// thread has it open. Blocks for one search, one open, one status read and one close, but for a
/// hub that does not answer only 2 s; any thread.
HubDetection Hub_Detect();

} // namespace vornadel
