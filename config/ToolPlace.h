#pragma once

#include <filesystem>
#include <string>

namespace vornadel
{

/// Where the tool lies on disk.
struct ToolPlace {
    /// Full path of the bundle, for example /opt/Vornadel.app; the executable's own directory outside a bundle.
    std::string bundlePath;
    /// Whether the executable lies in BUNDLE/Contents/MacOS.
    bool bundled = false;
    /// Directory of config.ini: BUNDLE/Contents/Resources, or the executable's own directory outside a bundle.
    std::string resourcePath;
};

/// The place of the running program, symbolic links resolved. `argv0` serves where the system does not tell.
ToolPlace toolPlace(const char* argv0);

/// The place of a program whose real path is `executable`.
ToolPlace toolPlaceOf(const std::filesystem::path& executable);

} // namespace vornadel
