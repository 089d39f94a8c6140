#pragma once

#include <cstdint>

namespace vornadel
{

/// What is known of the hub on the bus. Without a hub the version means nothing.
struct HubDetection {
    bool found = false; ///< a supported hub is attached
    /// 65535 when the hub could not be opened, which is also what a flow at work on it looks like;
    /// 0 when it was opened and its status block could not be read; the hub's own otherwise.
    std::uint16_t version = 65535;
};

/// Looks for a supported hub and reads its firmware version. Leaves the hub closed unless another
/// thread has it open. Blocks for one search, one open, one status read and one close; any thread.
HubDetection Hub_Detect();

} // namespace vornadel
