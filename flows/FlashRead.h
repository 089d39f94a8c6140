#pragma once

#include "flows/FlowReporter.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace vornadel
{

/// Reads the hub's whole flash, 32768 bytes from address 0, and restarts the hub into its firmware.
///
/// True only when every piece was read and the hub came back after the restart; `flash` has the bytes then and is
/// as it was otherwise. What they hold is not looked at: a blank flash is read as well as any other.
///
/// Both functions run on the caller's thread and may be empty. `finished` runs after the line that tells success,
/// with `flash` filled and the hub still open: a hub that is being taken over into the window must not be met
/// half-way by a detection. `closed` runs on every way out, when the hub has been closed; then the bar goes back to
/// 0. After a failure the hub may still run its ROM code. Blocks for seconds; stops at the next request or pause
/// after Hub_Abandon().
bool readFlash(std::vector<std::uint8_t>& flash, FlowReporter& reporter,
               const std::function<void()>& finished = {}, const std::function<void()>& closed = {});

} // namespace vornadel
