#pragma once

#include <chrono>
#include <functional>

namespace vornadel
{

/// Time and waiting. Every pause of the tool and every timed event goes through one of these, so
/// that a test of a forty-second wait takes microseconds. All members may be called from any
/// thread.
class Clock
{
public:
    using Duration = std::chrono::microseconds;

    Clock() = default;
    Clock(const Clock&) = delete;
    Clock& operator=(const Clock&) = delete;
    virtual ~Clock() = default;

    /// Monotonic time since an arbitrary start.
    virtual Duration now() = 0;

    /// Blocks for `pause`; returns at once after interrupt().
    virtual void sleep(Duration pause) = 0;

    /// Runs `task` once, `delay` from now, on a thread of the clock's (the virtual clock of the
    /// tests: inside the sleep that reaches the moment). Tasks run one after the other, in the
    /// order of their moments.
    virtual void after(Duration delay, std::function<void()> task) = 0;

    /// The program is ending: every sleep, running or to come, returns at once. Tasks still run at
    /// their moments.
    virtual void interrupt() = 0;
};

} // namespace vornadel
