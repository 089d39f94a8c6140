#pragma once

#include <string>

namespace vornadel
{

/// The tool's version, shown in the window's title. Set by the build.
inline constexpr const char* kToolVersion = VORNADEL_VERSION;

/// The commit that was built, as git abbreviates it; "unknown" for a source without one.
extern const char* const kToolCommit;

/// What --version prints of a program: "vornadelctl 1.02 (4b4632c)".
std::string versionText(const std::string& program);

} // namespace vornadel
