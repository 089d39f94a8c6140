#pragma once

#include "flows/FlowOptions.h"
#include "flows/FlowReporter.h"

#include <cstdint>
#include <vector>

namespace vornadel
{

/// Reads the hub's whole flash, from address 0, and restarts the hub into its firmware.
///
/// True only if every piece was read and the hub came back after the restart; in a strict flow also
/// only if it runs the firmware that was read. `flash` is set before reporter.finished() is called;
/// after a failure it is unchanged, but a strict flow sets it even if only the restart failed. The
/// content is not checked: a blank flash is read like any other.
///
/// Only a strict flow notices a hub that confirms a read but delivers nothing; otherwise such bytes
/// are 0.
///
/// The hub is closed in any case; after a failure it may still run its ROM code, although a strict
/// flow sends a hub back that it has restarted. Blocks for
/// seconds; stops at the next request or pause after Hub_Abandon().
bool readFlash(std::vector<std::uint8_t>& flash, FlowReporter& reporter,
               const FlowOptions& options = {});

} // namespace vornadel
