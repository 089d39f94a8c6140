#include "platform/macos/PlugNotifications.h"

#include "platform/macos/IokitNames.h"

#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/IOKitLib.h>

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

// Releases every device in the list. The next notification comes only after the end of the list.
void drain(io_iterator_t devices)
{
    while (const io_service_t device = IOIteratorNext(devices)) {
        IOObjectRelease(device);
    }
}

void devicesAdded(void* /*reference*/, io_iterator_t added)
{
    drain(added);
    notify(UsbEvent::Attached);
}

void devicesRemoved(void* /*reference*/, io_iterator_t removed)
{
    drain(removed);
    notify(UsbEvent::Detached);
}

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

// Consumes the dictionary. The list, null if the registration was refused, is never released.
io_iterator_t registerFor(const char* kind, IONotificationPortRef port,
                          CFMutableDictionaryRef devices, IOServiceMatchingCallback callback)
{
    io_iterator_t list = IO_OBJECT_NULL;
    if (port != nullptr) {
        IOServiceAddMatchingNotification(port, kind, devices, callback, nullptr, &list);
    } else if (devices != nullptr) {
        CFRelease(devices);
    }
    return list;
}

} // namespace

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
    const io_iterator_t added =
        registerFor(kIOFirstMatchNotification, addedPort, toAdd, devicesAdded);
    const io_iterator_t removed =
        registerFor(kIOTerminatedNotification, removedPort, toRemove, devicesRemoved);
    drain(added); // which arms the notification
    drain(removed);
    m_reporting = (addedSource != nullptr && added != IO_OBJECT_NULL) ||
                  (removedSource != nullptr && removed != IO_OBJECT_NULL);
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
