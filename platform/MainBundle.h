#pragma once

#include <filesystem>
#include <string>

namespace vornadel
{

/// Where the running program lies.
struct MainBundle {
    /// Full path of the bundle, for example /opt/Vornadel.app; the program's own directory outside
    /// a bundle.
    std::string path;
    /// Whether the program lies in a bundle, as BUNDLE/Contents/MacOS/PROGRAM.
    bool bundled = false;
};

/// The bundle around a program whose real path is `executable`.
MainBundle bundleAround(const std::filesystem::path& executable);

} // namespace vornadel
