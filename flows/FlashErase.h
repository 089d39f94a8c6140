#pragma once

#include "flows/FlowOptions.h"
#include "flows/FlowReporter.h"

namespace vornadel
{

/// Erases the hub's whole flash and restarts the hub.
///
/// True only if the hub confirmed the erase and came back after the restart; only a strict flow
/// reads the flash to see that it is blank. The hub is closed in any case. After a failure the
/// flash may be erased or not, and the hub may still run its ROM code. Blocks for seconds; stops at
/// the next request or pause after Hub_Abandon().
bool eraseFlash(FlowReporter& reporter, const FlowOptions& options = {});

} // namespace vornadel
