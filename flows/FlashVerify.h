#pragma once

#include "flows/FlowOptions.h"
#include "flows/FlowReporter.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace vornadel
{

/// Reads the hub's whole flash, compares its beginning with `image` and restarts the hub into its
/// firmware. `imageName` is only passed to the reporter.
///
/// True only if all bytes are equal and the hub came back after the restart; in a strict flow also
/// only if it runs the firmware that was read. If they differ, it reads the flash once more. It
/// also sends a hub back that it has restarted, if it cannot go on. `flash` is set once it has been
/// read, before reporter.finished() is called.
///
/// The hub is closed in any case; after a failure it may still run its ROM code. Blocks for
/// seconds; stops at the next request or pause after Hub_Abandon().
bool verifyFlash(std::span<const std::uint8_t> image, const std::string& imageName,
                 std::vector<std::uint8_t>& flash, FlowReporter& reporter,
                 const FlowOptions& options = {});

} // namespace vornadel
