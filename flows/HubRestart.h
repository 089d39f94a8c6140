#pragma once

#include "flows/FlowOptions.h"
#include "flows/FlowReporter.h"

#include <cstdint>

namespace vornadel
{

/// Restarts the hub into its firmware (HUB_MODE_FLASH), or into its ROM code, where it stays
/// (HUB_MODE_ROM); a hub that runs its ROM code already is left as it is.
///
/// True only if the hub came back; in a strict flow also only if it runs that code. The hub is
/// closed in any case. Blocks for seconds; stops at the next request or pause after Hub_Abandon().
bool restartHub(std::uint8_t mode, FlowReporter& reporter, const FlowOptions& options = {});

} // namespace vornadel
