#include "standins/sim/Notifier.h"

#include <utility>

namespace vornadel
{

bool Notifier::watch(UsbBus::Listener listener)
{
    const std::lock_guard lock(m_mutex);
    if (m_listener || !listener) {
        return false;
    }
    m_listener = std::make_shared<UsbBus::Listener>(std::move(listener));
    return true;
}

void Notifier::unwatch()
{
    std::shared_ptr<UsbBus::Listener> gone; // destroyed after the lock is released
    std::unique_lock lock(m_mutex);
    gone.swap(m_listener);
    m_events.clear();
    m_idle.wait(lock, [this] { return !m_delivering; });
}

void Notifier::push(UsbEvent event)
{
    const std::lock_guard lock(m_mutex);
    if (m_listener) {
        m_events.push_back(event);
    }
}

void Notifier::deliver()
{
    std::unique_lock lock(m_mutex);
    if (m_delivering) {
        return;
    }
    m_delivering = true;
    while (m_listener && !m_events.empty()) {
        const UsbEvent event = m_events.front();
        m_events.pop_front();
        // The copy is destroyed before the lock is taken again: what the listener owns must not be
        // destroyed under it.
        std::shared_ptr<UsbBus::Listener> listener = m_listener;
        lock.unlock();
        (*listener)(event);
        listener.reset();
        lock.lock();
    }
    m_delivering = false;
    m_idle.notify_all();
}

} // namespace vornadel
