// The device registry: searches, notifications, and the objects behind an `io_object_t`.

#include "tests/fake_macos/FakeCoreFoundation.h"
#include "tests/fake_macos/FakeUserClient.h"
#include "tests/fake_macos/MacState.h"

#include <IOKit/IOKitLib.h>

#include <string>
#include <utility>

// Opaque types of the platform. They need only a name.
struct __CFDictionary : vornadel::test::CoreObject {
    using CoreObject::CoreObject;
};
struct IONotificationPort {
    std::string name;
    __CFRunLoopSource* source = nullptr;
};

namespace vornadel::test
{

namespace
{

constexpr mach_port_t kMainPort = 0;

std::string portName(mach_port_t port)
{
    return port == kMainPort ? "main port" : "port of another kind";
}

std::string quoted(const char* text)
{
    return text != nullptr ? '"' + std::string(text) + '"' : "none";
}

std::string nameOf(CFDictionaryRef dictionary)
{
    return dictionary != nullptr ? dictionary->name : "none";
}

/// Searches and notifications always consume the caller's dictionary, even on failure.
void useUp(MacState& state, CFDictionaryRef dictionary)
{
    if (dictionary != nullptr) {
        state.goneAt(dictionary, "use");
    }
}

} // namespace

} // namespace vornadel::test

using namespace vornadel::test;

extern "C" {

const mach_port_t kIOMasterPortDefault = kMainPort;

CFMutableDictionaryRef IOServiceMatching(const char* name)
{
    const CurrentMac state;
    __CFDictionary* dictionary = nullptr;
    if (state->machine->givesDictionaries) {
        dictionary = state->madeAt(new __CFDictionary(state->nextName("dictionary")));
    }
    state->call("IOServiceMatching(" + quoted(name) + ") = " + nameOf(dictionary));
    return dictionary;
}

kern_return_t IOServiceGetMatchingServices(mach_port_t port, CFDictionaryRef matching,
                                           io_iterator_t* existing)
{
    const CurrentMac state;
    std::string text =
        "IOServiceGetMatchingServices(" + portName(port) + ", " + nameOf(matching) + ')';
    kern_return_t result =
        matching == nullptr ? kIOReturnBadArgument : state->machine->matchingResult;
    if (result == kIOReturnSuccess) {
        RegistryObject list{.name = state->nextName("iterator"), .isIterator = true, .devices = {}};
        list.devices.assign(state->attached.begin(), state->attached.end());
        text += " = " + list.name;
        *existing = state->add(std::move(list));
    }
    state->call(text + statusText(result));
    useUp(*state, matching);
    return result;
}

io_object_t IOIteratorNext(io_iterator_t iterator)
{
    const CurrentMac state;
    const auto found = state->objects.find(iterator);
    io_object_t next = IO_OBJECT_NULL;
    const std::string name = state->nameOf(iterator);
    if (found != state->objects.end() && found->second.isIterator) {
        RegistryObject& list = found->second;
        if (list.devices.empty()) {
            list.exhausted = true;
        } else {
            const DevicePointer device = list.devices.front();
            list.devices.pop_front();
            next = state->add(
                {.name = "service " + std::to_string(device->place), .devices = {device}});
        }
    } else if (iterator != IO_OBJECT_NULL) {
        state->wrong("IOIteratorNext of " + name);
    }
    state->call("IOIteratorNext(" + name + ") = " + state->nameOf(next));
    return next;
}

kern_return_t IOObjectRelease(io_object_t object)
{
    const CurrentMac state;
    const auto found = state->objects.find(object);
    const std::string name = state->nameOf(object);
    kern_return_t result = kIOReturnBadArgument;
    if (found == state->objects.end()) {
        state->wrong("release of " + name);
    } else {
        const RegistryObject& released = found->second;
        result = released.isIterator ? kIOReturnSuccess
                                     : released.devices.front()->behaviour.serviceReleaseResult;
        state->gone(name, "release");
        state->objects.erase(found);
        std::erase_if(state->notifications,
                      [object](const Notification& each) { return each.list == object; });
    }
    state->call("IOObjectRelease(" + name + ')' + statusText(result));
    return result;
}

kern_return_t IOCreatePlugInInterfaceForService(io_service_t service, CFUUIDRef pluginType,
                                                CFUUIDRef interfaceType,
                                                IOCFPlugInInterface*** interface, SInt32* score)
{
    const CurrentMac state;
    std::string text = "IOCreatePlugInInterfaceForService(" + state->nameOf(service) + ", " +
                       nameOf(pluginType) + ", " + nameOf(interfaceType) + ')';
    const auto found = state->objects.find(service);
    if (found == state->objects.end() || found->second.isIterator) {
        state->wrong("a plug-in for " + state->nameOf(service));
        state->call(text);
        return kIOReturnBadArgument;
    }
    const DevicePointer device = found->second.devices.front();
    if (device->behaviour.givesPlugIn) {
        *interface = makePlugIn(state.shared(), device);
        *score = 0x1000;
        text += " = plug-in " + std::to_string(device->place);
    }
    state->call(text + statusText(device->behaviour.plugInResult));
    return device->behaviour.plugInResult;
}

IONotificationPortRef IONotificationPortCreate(mach_port_t mainPort)
{
    const CurrentMac state;
    IONotificationPort* made = nullptr;
    const std::string name = state->nextName("port");
    if (state->machine->refusedPorts.count(state->counted["port"]) == 0) {
        const auto port = std::make_shared<IONotificationPort>();
        port->name = name;
        state->made(name);
        state->kept.push_back(port);
        made = port.get();
    }
    state->call("IONotificationPortCreate(" + portName(mainPort) +
                ") = " + (made != nullptr ? name : "none"));
    return made;
}

CFRunLoopSourceRef IONotificationPortGetRunLoopSource(IONotificationPortRef notify)
{
    const CurrentMac state;
    std::string text = "IONotificationPortGetRunLoopSource(";
    if (notify == nullptr) {
        state->wrong("the source of no port");
        state->call(text + "none)");
        return nullptr;
    }
    const int number = std::stoi(notify->name.substr(notify->name.find(' ')));
    if (notify->source == nullptr && state->machine->portsWithoutSource.count(number) == 0) {
        notify->source = makeSource(*state, notify, "source " + std::to_string(number));
    }
    state->call(text + notify->name + ") = " + nameOf(notify->source));
    return notify->source;
}

kern_return_t IOServiceAddMatchingNotification(IONotificationPortRef notify,
                                               const char* notificationType,
                                               CFDictionaryRef matching,
                                               IOServiceMatchingCallback callback, void* reference,
                                               io_iterator_t* notification)
{
    const CurrentMac state;
    if (notify == nullptr) {
        state->wrong("a notification without a port");
        return kIOReturnBadArgument;
    }
    const auto refused = state->machine->refusedNotifications.find(notificationType);
    kern_return_t result = matching == nullptr ? kIOReturnBadArgument : kIOReturnSuccess;
    if (refused != state->machine->refusedNotifications.end()) {
        result = refused->second;
    }
    std::string text = "IOServiceAddMatchingNotification(" + notify->name + ", " +
                       quoted(notificationType) + ", " + nameOf(matching) + ", " +
                       (reference == nullptr ? "no reference" : "a reference") + ')';
    if (result == kIOReturnSuccess) {
        RegistryObject list{.name = state->nextName("iterator"), .isIterator = true, .devices = {}};
        if (std::string(notificationType) == kIOFirstMatchNotification) {
            list.devices.assign(state->attached.begin(), state->attached.end());
        }
        text += " = " + list.name;
        *notification = state->add(std::move(list));
        state->notifications.push_back(
            {notificationType, *notification, notify, callback, reference});
    }
    state->call(text + statusText(result));
    useUp(*state, matching);
    return result;
}

} // extern "C"
