#pragma once

#include <string>

namespace vornadel
{

/// Starting a script with administrator rights.
class PrivilegedRun
{
public:
    PrivilegedRun() = default;
    PrivilegedRun(const PrivilegedRun&) = delete;
    PrivilegedRun& operator=(const PrivilegedRun&) = delete;
    virtual ~PrivilegedRun() = default;

    /// Asks for the administrator's credentials the platform's way and starts the script, without
    /// arguments. Does not wait for it to end. False when the platform has no means to do so; a
    /// refusal by the user is not told apart from success.
    virtual bool start(const std::string& script) = 0;
};

} // namespace vornadel
