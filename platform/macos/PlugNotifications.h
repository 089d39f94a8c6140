#pragma once

#include "platform/UsbBus.h"

#include <IOKit/IOKitLib.h>

namespace vornadel
{

/// The devices of one kind of notification. Only when they have been taken to the end does the next
/// notification come.
class NotifiedServices final : public UsbServices
{
public:
    bool next() override;

    /// The system's list, which is never given back; null when the registration was refused.
    io_iterator_t iterator = IO_OBJECT_NULL;
};

/// The system's notifications of USB devices that come and go. Everything belongs to the thread
/// that makes the object: its run loop brings the notifications, and the listener runs there.
///
/// Ports and lists stay with the system until the process ends; the end of the object is only the
/// end of listening.
class PlugNotifications
{
public:
    PlugNotifications();
    PlugNotifications(const PlugNotifications&) = delete;
    PlugNotifications& operator=(const PlugNotifications&) = delete;
    ~PlugNotifications();

    /// Whether the system reports at least one of the two kinds.
    bool reporting() const { return m_reporting; }
    UsbServices& services(UsbEvent event)
    {
        return event == UsbEvent::Attached ? m_added : m_removed;
    }

    /// Has the notifications tell this listener from now on, and none of another object's. An empty
    /// one ends that, and leaves another object's alone.
    void listen(UsbBus::Listener listener);
    void tell(UsbEvent event) const;

private:
    UsbBus::Listener m_listener;
    NotifiedServices m_added;
    NotifiedServices m_removed;
    bool m_reporting = false;
};

} // namespace vornadel
