#pragma once

namespace vornadel
{

/// The tool's version, as the window's title and --version show it; the build sets it.
inline constexpr const char* kToolVersion = VORNADEL_VERSION;

} // namespace vornadel
