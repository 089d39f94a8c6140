#pragma once

#include "firmware/FwImage.h"
#include "flows/FlowOptions.h"
#include "flows/FlowReporter.h"

#include <cstdint>
#include <span>
#include <string>

namespace vornadel
{

/// Writes a whole image to the hub's flash from address 0, reads it back, compares every byte and
/// restarts the hub into it. `imageName` is only passed to the reporter.
///
/// True only if the flash read back equals the image and the hub came back after the restart. The
/// hub is closed in any case. After a failure the flash may be erased or partly written, and the
/// hub may still run its ROM code. Blocks for seconds; stops at the next request or pause after
/// Hub_Abandon().
bool updateFirmware(const FwImage& image, const std::string& imageName, FlowReporter& reporter,
                    const FlowOptions& options = {});

/// The same with any content for the flash, such as one that was read before. Only if it is an
/// image does the hub have to run it afterwards.
bool restoreFlash(std::span<const std::uint8_t> bytes, const std::string& name,
                  FlowReporter& reporter, const FlowOptions& options = {});

} // namespace vornadel
