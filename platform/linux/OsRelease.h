#pragma once

#include "platform/SystemVersion.h"

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace vornadel
{

/// The distribution's version: `VERSION_ID` of os-release, up to three numbers separated by dots. A
/// missing part is 0, so "12" is 12.0.0 and "22.04" is 22.4.0. If an assignment is repeated, the
/// last one counts.
class OsRelease final : public SystemVersion
{
public:
    /// Files of this size or more are refused (EFBIG); real ones have a few hundred bytes.
    static constexpr std::size_t kMaxFileSize = 65536;

    OsRelease() : OsRelease({"/etc/os-release", "/usr/lib/os-release"}) {}
    /// The first of `paths` that can be read counts.
    explicit OsRelease(std::vector<std::string> paths) : m_paths(std::move(paths)) {}

    /// Errors: the errno of the last file if none can be read, ENOENT if there is no `VERSION_ID`,
    /// EINVAL if it is not a numeric version.
    SystemVersionNumbers read() override;

private:
    std::vector<std::string> m_paths;
};

} // namespace vornadel
