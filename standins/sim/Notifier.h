#pragma once

#include "platform/UsbBus.h"

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>

namespace vornadel
{

/// Hands USB events to the one listener: in the order of push(), one at a time, and with no lock
/// held. All members may be called from any thread.
class Notifier
{
public:
    bool watch(UsbBus::Listener listener); ///< false when there is a listener already
    /// After the return the listener is neither running nor called again. Not to be called from the
    /// listener.
    void unwatch();

    /// Queues one event; dropped when nobody watches. May be called under the caller's locks.
    void push(UsbEvent event);
    /// Calls the listener with what is queued, unless another thread, or this one further up, is
    /// doing so already. To be called without locks.
    void deliver();

private:
    std::mutex m_mutex;
    std::condition_variable m_idle;
    std::shared_ptr<UsbBus::Listener> m_listener;
    std::deque<UsbEvent> m_events;
    bool m_delivering = false;
};

} // namespace vornadel
