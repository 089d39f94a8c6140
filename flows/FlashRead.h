#pragma once

#include "flows/FlowReporter.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace vornadel
{

/// Reads the hub's whole flash, 32768 bytes from address 0, and restarts the hub into its firmware.
///
/// True only when every piece was read and the hub came back after the restart; `flash` has the
/// bytes then and is as it was otherwise. What they hold is not looked at: a blank flash is read as
/// well as any other.
///
/// A hub that confirms a read without delivering anything is not found out; such bytes are 0.
///
/// Two steps of the caller, either may be empty, run on the calling thread. `finished`: after
/// success, `flash` being filled and the hub still open. `closed`: on every way out, as soon as the
/// hub has been closed and before the bar goes back to 0. After a failure the hub may still run its
/// ROM code. Blocks for seconds; stops at the next request or pause after Hub_Abandon().
bool readFlash(std::vector<std::uint8_t>& flash, FlowReporter& reporter,
               const std::function<void()>& finished = {},
               const std::function<void()>& closed = {});

} // namespace vornadel
