#pragma once

#include <memory>
#include <optional>
#include <string>

namespace vornadel
{

/// While it lives, scripts do not withdraw access to the hub; see PrivilegedRun::holdHub().
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

    /// Waits until all scripts that were started here have ended. Returns the exit status of the
    /// last one; nothing if the platform does not tell it.
    virtual std::optional<int> wait() { return {}; }

    /// Tells the scripts that this process is using the hub. A script started here withdraws access
    /// only after all holds have ended, or after its time limit. Null if a script is withdrawing
    /// access right now; then the hub must be left alone. Any thread. On a platform whose scripts
    /// do not wait, the hold does nothing.
    virtual std::unique_ptr<HubHold> holdHub() { return std::make_unique<HubHold>(); }
};

} // namespace vornadel
