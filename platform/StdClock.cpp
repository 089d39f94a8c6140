#include "platform/StdClock.h"

#include <utility>

namespace vornadel
{

StdClock::~StdClock()
{
    {
        const std::lock_guard lock(m_mutex);
        m_ending = true;
    }
    m_taskAdded.notify_all();
    if (m_taskThread.joinable()) {
        m_taskThread.join();
    }
}

Clock::Duration StdClock::now()
{
    return std::chrono::duration_cast<Duration>(
        std::chrono::steady_clock::now().time_since_epoch());
}

void StdClock::sleep(Duration pause)
{
    sleepUntil([] { return false; }, pause);
}

void StdClock::sleepUntil(const std::function<bool()>& over, Duration pause)
{
    std::unique_lock lock(m_mutex);
    m_sleepers.wait_for(lock, pause, [&] { return m_interrupted || over(); });
}

void StdClock::wake()
{
    {
        const std::lock_guard lock(m_mutex); // a sleeper that looks now either saw it or is
                                             // notified
    }
    m_sleepers.notify_all();
}

void StdClock::after(Duration delay, std::function<void()> task)
{
    {
        const std::lock_guard lock(m_mutex);
        m_tasks.emplace(std::chrono::steady_clock::now() + delay, std::move(task));
        if (!m_taskThread.joinable()) {
            m_taskThread = std::thread([this] { runTasks(); });
        }
    }
    m_taskAdded.notify_all();
}

void StdClock::interrupt()
{
    {
        const std::lock_guard lock(m_mutex);
        m_interrupted = true;
    }
    m_sleepers.notify_all();
}

void StdClock::runTasks()
{
    std::unique_lock lock(m_mutex);
    while (!m_ending) {
        if (m_tasks.empty()) {
            m_taskAdded.wait(lock);
            continue;
        }
        const Moment due = m_tasks.begin()->first;
        if (std::chrono::steady_clock::now() < due) {
            m_taskAdded.wait_until(lock, due);
            continue;
        }
        const std::function<void()> task = std::move(m_tasks.begin()->second);
        m_tasks.erase(m_tasks.begin());
        lock.unlock();
        task();
        lock.lock();
    }
}

} // namespace vornadel
