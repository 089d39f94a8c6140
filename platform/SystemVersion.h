#pragma once

namespace vornadel
{

/// The operating system's version in three numbers, or the reason why there is none.
struct SystemVersionNumbers {
    unsigned major = 0;
    unsigned minor = 0;
    unsigned bugfix = 0;
    long error = 0; ///< 0 when the numbers hold, otherwise the platform's error code
};

/// The operating system's own version, never its kernel's.
class SystemVersion
{
public:
    SystemVersion() = default;
    SystemVersion(const SystemVersion&) = delete;
    SystemVersion& operator=(const SystemVersion&) = delete;
    virtual ~SystemVersion() = default;

    virtual SystemVersionNumbers read() = 0;
};

} // namespace vornadel
