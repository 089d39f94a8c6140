#pragma once

#include "platform/SystemVersion.h"

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace vornadel
{

/// The distribution's version: `VERSION_ID` of os-release, up to three numbers between dots; a part
/// that is absent is 0, so "12" is 12.0.0 and "22.04" is 22.4.0. Of an assignment that is repeated
/// the last one counts.
class OsRelease final : public SystemVersion
{
public:
    /// Files of this size and more are refused (EFBIG); real ones are some hundred bytes.
    static constexpr std::size_t kMaxFileSize = 65536;

    OsRelease() : OsRelease({"/etc/os-release", "/usr/lib/os-release"}) {}
    /// The first of `paths` that can be read is the one that counts.
    explicit OsRelease(std::vector<std::string> paths) : m_paths(std::move(paths)) {}

    /// Errors: the errno of the last file when none can be read, ENOENT when there is no
    /// `VERSION_ID`, EINVAL when it is not a version in numbers.
    SystemVersionNumbers read() override;

private:
    std::vector<std::string> m_paths;
};

} // namespace vornadel
