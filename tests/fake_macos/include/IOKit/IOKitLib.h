// The part of IOKit that the macOS back end uses; see CoreFoundation.h beside it.

#pragma once

#include <CoreFoundation/CoreFoundation.h>

using kern_return_t = int;
using mach_port_t = unsigned int;
using IOReturn = kern_return_t;
using io_object_t = mach_port_t;
using io_iterator_t = io_object_t;
using io_service_t = io_object_t;

struct IONotificationPort;
using IONotificationPortRef = IONotificationPort*;
using IOServiceMatchingCallback = void (*)(void* reference, io_iterator_t iterator);

#define IO_OBJECT_NULL (static_cast<io_object_t>(0))

#define kIOReturnSuccess 0
#define kIOReturnError (static_cast<IOReturn>(0xE00002BC))
#define kIOReturnNoMemory (static_cast<IOReturn>(0xE00002BD))
#define kIOReturnNoDevice (static_cast<IOReturn>(0xE00002C0))
#define kIOReturnNotPrivileged (static_cast<IOReturn>(0xE00002C1))
#define kIOReturnBadArgument (static_cast<IOReturn>(0xE00002C2))
#define kIOReturnExclusiveAccess (static_cast<IOReturn>(0xE00002C5))
#define kIOReturnNotOpen (static_cast<IOReturn>(0xE00002CD))
#define kIOReturnBusy (static_cast<IOReturn>(0xE00002D5))
#define kIOReturnTimeout (static_cast<IOReturn>(0xE00002D6))
#define kIOReturnNotAttached (static_cast<IOReturn>(0xE00002D9))
#define kIOReturnNotPermitted (static_cast<IOReturn>(0xE00002E2))
#define kIOReturnUnderrun (static_cast<IOReturn>(0xE00002E7))
#define kIOReturnNotFound (static_cast<IOReturn>(0xE00002F0))

#define kIOFirstMatchNotification "IOServiceFirstMatch"
#define kIOTerminatedNotification "IOServiceTerminate"

extern "C" {

[[deprecated]] extern const mach_port_t kIOMasterPortDefault;

CFMutableDictionaryRef IOServiceMatching(const char* name);
kern_return_t IOServiceGetMatchingServices(mach_port_t port, CFDictionaryRef matching,
                                           io_iterator_t* existing);
io_object_t IOIteratorNext(io_iterator_t iterator);
kern_return_t IOObjectRelease(io_object_t object);

IONotificationPortRef IONotificationPortCreate(mach_port_t port);
CFRunLoopSourceRef IONotificationPortGetRunLoopSource(IONotificationPortRef notify);
kern_return_t IOServiceAddMatchingNotification(IONotificationPortRef notify,
                                               const char* notificationType,
                                               CFDictionaryRef matching,
                                               IOServiceMatchingCallback callback, void* reference,
                                               io_iterator_t* notification);

} // extern "C"
