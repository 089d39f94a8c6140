#pragma once

#include "platform/UsbBus.h"

namespace vornadel
{

/// The system's notifications of USB devices that come and go. Everything belongs to the thread
/// that creates the object: its run loop delivers the notifications, and the listener runs there.
///
/// Ports and lists are kept until the process ends; destroying the object only stops listening.
class PlugNotifications
{
public:
    PlugNotifications();
    PlugNotifications(const PlugNotifications&) = delete;
    PlugNotifications& operator=(const PlugNotifications&) = delete;
    ~PlugNotifications();

    /// Whether the system reports at least one of the two kinds.
    bool reporting() const { return m_reporting; }

    /// From now on notifies this listener instead of another object's. An empty one stops this
    /// object's listening and does not affect another object's.
    void listen(UsbBus::Listener listener);
    void tell(UsbEvent event) const;

private:
    UsbBus::Listener m_listener;
    bool m_reporting = false;
};

} // namespace vornadel
