#pragma once

#include <condition_variable>
#include <mutex>

namespace vornadel::test
{

/// A point in the code under test at which a test can stop a thread. Open at first.
class Gate
{
public:
    Gate() = default;
    Gate(const Gate&) = delete;
    Gate& operator=(const Gate&) = delete;
    ~Gate() { open(); }

    /// Called by the thread to be stopped; returns when the gate is open.
    void pass()
    {
        std::unique_lock lock(m_mutex);
        ++m_waiting;
        m_opened.wait(lock, [this] { return m_open; });
        --m_waiting;
    }

    void shut()
    {
        const std::lock_guard lock(m_mutex);
        m_open = false;
    }

    void open()
    {
        const std::lock_guard lock(m_mutex);
        m_open = true;
        m_opened.notify_all();
    }

    /// Whether a thread is waiting at the closed gate.
    bool isReached()
    {
        const std::lock_guard lock(m_mutex);
        return m_waiting > 0;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_opened;
    bool m_open = true;
    int m_waiting = 0;
};

} // namespace vornadel::test
