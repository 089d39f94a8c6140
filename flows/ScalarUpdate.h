#pragma once

#include "firmware/FwImage.h"
#include "flows/FlowReporter.h"

#include <string>

namespace vornadel
{

/// The unattended update: loads the configured image into `image`, unless none is configured, and
/// then writes what `image` holds as updateFirmware() does. `fwbinPath` is relative to the resource
/// directory, even when it begins with a slash.
bool updateScalarImage(FwImage& image, const std::string& resourcePath,
                       const std::string& fwbinPath, const std::string& imageName,
                       FlowReporter& reporter);

} // namespace vornadel
