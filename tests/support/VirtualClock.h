#pragma once

#include "platform/Clock.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

namespace vornadel::test
{

/// A clock on which only sleeping makes time pass, and without delay. Records the requested pauses.
class VirtualClock : public Clock
{
public:
    Duration now() override
    {
        const std::lock_guard lock(m_mutex);
        return m_now;
    }

    void sleep(Duration pause) override
    {
        sleepUntil([] { return false; }, pause);
    }

    void sleepUntil(const std::function<bool()>& over, Duration pause) override
    {
        {
            const std::lock_guard lock(m_mutex);
            m_pauses.push_back(pause);
            if (m_interrupted) {
                return;
            }
        }
        if (onSleep) {
            onSleep(pause);
        }
        advanceUntil(over, pause);
    }

    void wake() override {} // the tasks that wake run inside a sleep, which looks after each

    void after(Duration delay, std::function<void()> task) override
    {
        const std::lock_guard lock(m_mutex);
        m_tasks.emplace(m_now + delay, std::move(task));
    }

    void interrupt() override
    {
        const std::lock_guard lock(m_mutex);
        m_interrupted = true;
    }

    /// Lets time pass without recording a pause, and runs the tasks that become due.
    void advance(Duration by)
    {
        advanceUntil([] { return false; }, by);
    }

    /// All requested pauses so far, in order.
    std::vector<Duration> pauses()
    {
        const std::lock_guard lock(m_mutex);
        return m_pauses;
    }

    void forgetPauses()
    {
        const std::lock_guard lock(m_mutex);
        m_pauses.clear();
    }

    /// Called in sleep(), on the sleeper's thread, before time passes. Set it before the threads
    /// start.
    std::function<void(Duration)> onSleep;

private:
    void advanceUntil(const std::function<bool()>& over, Duration by)
    {
        std::unique_lock lock(m_mutex);
        const Duration until = m_now + by;
        while (!isOver(over, lock)) {
            if (m_tasks.empty() || m_tasks.begin()->first > until) {
                m_now = std::max(m_now, until);
                return;
            }
            m_now = std::max(m_now, m_tasks.begin()->first);
            const std::function<void()> task = std::move(m_tasks.begin()->second);
            m_tasks.erase(m_tasks.begin());
            lock.unlock();
            task();
            lock.lock();
        }
    }

    static bool isOver(const std::function<bool()>& over, std::unique_lock<std::mutex>& lock)
    {
        lock.unlock();
        const bool result = over();
        lock.lock();
        return result;
    }

    std::mutex m_mutex;
    Duration m_now{0};
    std::multimap<Duration, std::function<void()>> m_tasks;
    std::vector<Duration> m_pauses;
    bool m_interrupted = false;
};

} // namespace vornadel::test
