#pragma once

#include "platform/UsbBus.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <thread>
#include <vector>

namespace vornadel::test
{

/// The events that a watch reported. Must outlive the watch.
class PlugEvents
{
public:
    UsbBus::Listener listener()
    {
        return [this](UsbEvent event) {
            const std::lock_guard lock(m_mutex);
            m_events.push_back(event);
            m_thread = std::this_thread::get_id();
            m_arrived.notify_all();
        };
    }

    /// Waits up to twenty seconds for an event of the kind after the first `from` events; false on
    /// time-out.
    bool waitFor(UsbEvent event, std::size_t from = 0)
    {
        std::unique_lock lock(m_mutex);
        return m_arrived.wait_for(lock, std::chrono::seconds(20), [this, event, from] {
            for (std::size_t i = from; i < m_events.size(); ++i) {
                if (m_events[i] == event) {
                    return true;
                }
            }
            return false;
        });
    }

    std::vector<UsbEvent> all()
    {
        const std::lock_guard lock(m_mutex);
        return m_events;
    }

    /// The thread of the last event.
    std::thread::id thread()
    {
        const std::lock_guard lock(m_mutex);
        return m_thread;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_arrived;
    std::vector<UsbEvent> m_events;
    std::thread::id m_thread;
};

} // namespace vornadel::test
