#pragma once

#include <filesystem>
#include <string>

namespace vornadel
{

/// Where the tool lies on disk.
struct ToolPlace {
    /// Full path of the bundle, for example /opt/Vornadel.app; the program's own directory outside
    /// a bundle.
    std::string bundlePath;
    /// Whether the program lies in a bundle, as BUNDLE/Contents/MacOS/PROGRAM.
    bool bundled = false;
    /// Directory of config.ini: BUNDLE/Contents/Resources; outside a bundle the program's own.
    std::string resourcePath;
};

ToolPlace toolPlaceInBundle(const std::string& bundle);
ToolPlace toolPlaceOutsideBundle(const std::string& directory);

/// The place of a program whose real path is `executable`.
ToolPlace toolPlaceOf(const std::filesystem::path& executable);

} // namespace vornadel
