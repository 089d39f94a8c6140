#pragma once

#include "platform/MainBundle.h"

#include <string>

namespace vornadel
{

/// Where the tool lies on disk.
struct ToolPlace {
    /// Full path of the bundle, for example /opt/Vornadel.app; the executable's own directory
    /// outside a bundle.
    std::string bundlePath;
    /// Whether the executable lies in BUNDLE/Contents/MacOS.
    bool bundled = false;
    /// Directory of config.ini: BUNDLE/Contents/Resources, or the executable's own directory
    /// outside a bundle.
    std::string resourcePath;
};

ToolPlace toolPlaceOf(const MainBundle& bundle);

} // namespace vornadel
