#pragma once

namespace vornadel
{

/// The operating system's version in three numbers, or the error that prevented reading it.
struct SystemVersionNumbers {
    unsigned major = 0;
    unsigned minor = 0;
    unsigned bugfix = 0;
    long error = 0; ///< 0 if the numbers are valid, otherwise the platform's error code
};

/// The version of the operating system, not of its kernel.
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
