#pragma once

#include "firmware/FwImage.h"

#include <string>

namespace vornadel
{

/// Loads the configured image over `image`. True when its bytes took the place of the image that
/// was there, even if they are no firmware; false when none is configured or the file cannot be
/// read. `fwbinPath` is relative to the resource directory, even when it begins with a slash.
bool loadConfiguredImage(FwImage& image, const std::string& resourcePath,
                         const std::string& fwbinPath);

} // namespace vornadel
