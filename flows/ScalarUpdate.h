#pragma once

#include "firmware/FwImage.h"
#include "flows/FlowReporter.h"

#include <chrono>
#include <string>

namespace vornadel
{

/// How long a success of the unattended update is on display before the window ends by itself.
inline constexpr std::chrono::seconds kScalarFarewell{5};

/// The unattended update: loads the configured image, unless none is configured, and writes what
/// `image` holds then, as updateFirmware() does. `fwbinPath` is relative to the resource directory,
/// whatever it begins with. `imageName` is shown.
bool updateScalarImage(FwImage& image, const std::string& resourcePath,
                       const std::string& fwbinPath, const std::string& imageName,
                       FlowReporter& reporter);

} // namespace vornadel
