#pragma once

#include <memory>
#include <string>

namespace vornadel
{

/// Keeps scripts from taking the access to the hub away, from PrivilegedRun::holdHub() to its end.
class HubHold
{
public:
    HubHold() = default;
    HubHold(const HubHold&) = delete;
    HubHold& operator=(const HubHold&) = delete;
    virtual ~HubHold() = default;
};

/// Starts scripts with administrator rights.
class PrivilegedRun
{
public:
    PrivilegedRun() = default;
    PrivilegedRun(const PrivilegedRun&) = delete;
    PrivilegedRun& operator=(const PrivilegedRun&) = delete;
    virtual ~PrivilegedRun() = default;

    /// Asks for the administrator's credentials in the platform's way and starts the script,
    /// without arguments. Does not wait for its end. False if the platform cannot do this. A
    /// refusal by the user looks the same as success.
    virtual bool start(const std::string& script) = 0;

    /// Tells the scripts that this process is using the hub: a script started here takes no access
    /// away before all holds have ended, or its patience has. Null when a script is taking access
    /// away right now, and the hub must be left alone. Any thread; on a platform whose scripts do
    /// not wait, the hold does nothing.
    virtual std::unique_ptr<HubHold> holdHub() { return std::make_unique<HubHold>(); }
};

} // namespace vornadel
