#pragma once

#include "platform/Clock.h"

#include <atomic>
#include <functional>
#include <utility>

namespace vornadel::bench
{

/// Forwards to another clock and adds up the pauses.
class RecordingClock final : public Clock
{
public:
    explicit RecordingClock(Clock& clock) : m_clock(clock) {}

    Duration now() override { return m_clock.now(); }
    void sleep(Duration pause) override
    {
        m_asked += pause.count();
        m_clock.sleep(pause);
    }
    void sleepUntil(const std::function<bool()>& over, Duration pause) override
    {
        m_asked += pause.count();
        m_clock.sleepUntil(over, pause);
    }
    void wake() override { m_clock.wake(); }
    void after(Duration delay, std::function<void()> task) override
    {
        m_delayed += delay.count();
        m_clock.after(delay, std::move(task));
    }
    void interrupt() override { m_clock.interrupt(); }

    /// All pauses so far.
    Duration asked() const { return Duration(m_asked); }
    /// The delays of all tasks so far.
    Duration delayed() const { return Duration(m_delayed); }

private:
    Clock& m_clock;
    std::atomic<Duration::rep> m_asked = 0;
    std::atomic<Duration::rep> m_delayed = 0;
};

} // namespace vornadel::bench
