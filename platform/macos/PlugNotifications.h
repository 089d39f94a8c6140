#pragma once

#include "platform/UsbBus.h"

namespace vornadel
{

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

    /// Notifies this listener from now on, and no longer that of another object. An empty one ends
    /// that, and leaves another object's alone.
    void listen(UsbBus::Listener listener);
    void tell(UsbEvent event) const;

private:
    UsbBus::Listener m_listener;
    bool m_reporting = false;
};

} // namespace vornadel
