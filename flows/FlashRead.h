#pragma once

#include "flows/FlowReporter.h"

#include <cstdint>
#include <vector>

namespace vornadel
{

/// Reads the hub's whole flash, from address 0, and restarts the hub into its firmware.
///
/// True only when every piece was read and the hub came back after the restart. `flash` then has
/// the bytes, from before reporter.finished(); after a failure it is unchanged. The bytes are not
/// judged: a blank flash is read as well as any other.
///
/// A hub that confirms a read and delivers nothing is not noticed; such bytes are 0.
///
/// On every way out the hub is closed; after a failure it may still run its ROM code. Blocks for
/// seconds; stops at the next request or pause after Hub_Abandon().
bool readFlash(std::vector<std::uint8_t>& flash, FlowReporter& reporter);

} // namespace vornadel
