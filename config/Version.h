#pragma once

namespace vornadel
{

/// The tool's version, shown in the window's title and by --version. Set by the build.
inline constexpr const char* kToolVersion = VORNADEL_VERSION;

} // namespace vornadel
