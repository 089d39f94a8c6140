#pragma once

#include "platform/UsbBus.h"

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>

namespace vornadel
{

/// Delivers USB events to the one listener: in the order of push(), one at a time, and without
/// holding a lock. All members may be called from any thread.
class Notifier
{
public:
    bool watch(UsbBus::Listener listener); ///< false if there is a listener already
    /// Afterwards the listener is neither running nor called again. The listener must not call it.
    void unwatch();

    /// Queues one event, or drops it if nobody watches. The caller may hold locks.
    void push(UsbEvent event);
    /// Calls the listener with the queued events, unless another thread, or an outer call on this
    /// one, is doing so already. The caller must hold no locks.
    void deliver();

private:
    std::mutex m_mutex;
    std::condition_variable m_idle;
    std::shared_ptr<UsbBus::Listener> m_listener;
    std::deque<UsbEvent> m_events;
    bool m_delivering = false;
};

} // namespace vornadel
