#pragma once

#include "firmware/FwImage.h"
#include "flows/FlowReporter.h"

#include <string>

namespace vornadel
{

/// Loads the configured image over `image`. False when none is configured or it does not load; a
/// file that cannot be read leaves the image that was there. `fwbinPath` is relative to the
/// resource directory, even when it begins with a slash.
bool loadConfiguredImage(FwImage& image, const std::string& resourcePath,
                         const std::string& fwbinPath);

/// The unattended update: loads the configured image into `image`, unless none is configured, and
/// then writes what `image` holds as updateFirmware() does.
bool updateScalarImage(FwImage& image, const std::string& resourcePath,
                       const std::string& fwbinPath, const std::string& imageName,
                       FlowReporter& reporter);

} // namespace vornadel
