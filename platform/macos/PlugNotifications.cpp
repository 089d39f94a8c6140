#include "platform/macos/PlugNotifications.h"

#include "platform/macos/IokitNames.h"

#include <CoreFoundation/CoreFoundation.h>

#include <utility>

namespace vornadel
{

namespace
{

PlugNotifications* receiver = nullptr; // the callbacks carry no reference to it

void notify(UsbEvent event)
{
    if (receiver != nullptr) {
        receiver->tell(event);
    }
}

// The list is not read here: the listener reads it later on this thread.
void devicesAdded(void* /*reference*/, io_iterator_t /*added*/) { notify(UsbEvent::Attached); }
void devicesRemoved(void* /*reference*/, io_iterator_t /*removed*/) { notify(UsbEvent::Detached); }

CFRunLoopSourceRef sourceOf(IONotificationPortRef port)
{
    return port != nullptr ? IONotificationPortGetRunLoopSource(port) : nullptr;
}

void add(CFRunLoopSourceRef source, CFRunLoopRef runLoop)
{
    if (source != nullptr) {
        CFRunLoopAddSource(runLoop, source, kCFRunLoopDefaultMode);
    }
}

// Consumes the dictionary.
void registerFor(const char* kind, IONotificationPortRef port, CFMutableDictionaryRef devices,
                 IOServiceMatchingCallback callback, io_iterator_t& list)
{
    if (port != nullptr) {
        IOServiceAddMatchingNotification(port, kind, devices, callback, nullptr, &list);
    } else if (devices != nullptr) {
        CFRelease(devices);
    }
}

} // namespace

bool NotifiedServices::next()
{
    const io_service_t service = IOIteratorNext(iterator);
    if (service == IO_OBJECT_NULL) {
        return false;
    }
    IOObjectRelease(service);
    return true;
}

PlugNotifications::PlugNotifications()
{
    const CFMutableDictionaryRef toAdd = IOServiceMatching(kUsbDeviceClass);
    const CFMutableDictionaryRef toRemove = IOServiceMatching(kUsbDeviceClass);
    const IONotificationPortRef addedPort = IONotificationPortCreate(masterPort());
    const IONotificationPortRef removedPort = IONotificationPortCreate(masterPort());
    const CFRunLoopSourceRef addedSource = sourceOf(addedPort);
    const CFRunLoopSourceRef removedSource = sourceOf(removedPort);
    const CFRunLoopRef runLoop = CFRunLoopGetCurrent();
    add(addedSource, runLoop);
    add(removedSource, runLoop);
    registerFor(kIOFirstMatchNotification, addedPort, toAdd, devicesAdded, m_added.iterator);
    registerFor(kIOTerminatedNotification, removedPort, toRemove, devicesRemoved,
                m_removed.iterator);
    m_reporting = (addedSource != nullptr && m_added.iterator != IO_OBJECT_NULL) ||
                  (removedSource != nullptr && m_removed.iterator != IO_OBJECT_NULL);
}

PlugNotifications::~PlugNotifications()
{
    if (receiver == this) {
        receiver = nullptr;
    }
}

void PlugNotifications::listen(UsbBus::Listener listener)
{
    m_listener = std::move(listener);
    if (m_listener) {
        receiver = this;
    }
}

void PlugNotifications::tell(UsbEvent event) const
{
    if (m_listener) {
        m_listener(event);
    }
}

} // namespace vornadel
