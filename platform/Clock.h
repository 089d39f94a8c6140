#pragma once

#include <chrono>
#include <functional>

namespace vornadel
{

/// Time and waiting. Every pause of the tool and every timed event uses a Clock, so a test of a
/// forty-second wait takes microseconds. All members may be called from any thread.
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

    /// Blocks for `pause`, or until `over` is true. Looks at it first, and again whenever wake() is
    /// called. Returns at once after interrupt().
    virtual void sleepUntil(const std::function<bool()>& over, Duration pause) = 0;

    /// Makes every sleepUntil() look again. Call it after the change, without holding a lock that
    /// `over` takes.
    virtual void wake() = 0;

    /// Runs `task` once, `delay` from now, on the clock's thread (on the tests' virtual clock:
    /// inside the sleep that reaches that time). Tasks run one after the other, in the order of
    /// their times.
    virtual void after(Duration delay, std::function<void()> task) = 0;

    /// The program is ending: every current and future sleep returns at once. Tasks still run at
    /// their times.
    virtual void interrupt() = 0;
};

} // namespace vornadel
