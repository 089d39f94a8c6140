#pragma once

#include "tests/fake_macos/FakeMacos.h"

#include <atomic>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace vornadel::test
{

/// A device as the machine keeps it.
struct AttachedDevice {
    MacDevice behaviour;
    std::size_t place = 0;
    bool present = true;
    const void* holder = nullptr; ///< the interface that has it open
};

using DevicePointer = std::shared_ptr<AttachedDevice>;

/// Something behind an `io_object_t`: an iterator over devices, or the service of one.
struct RegistryObject {
    std::string name;
    bool isIterator = false;
    std::deque<DevicePointer> devices; ///< those still to come; of a service its own
    bool exhausted = false;            ///< has said that it has no more, and may notify again
};

struct Notification {
    std::string kind;
    io_iterator_t list = 0;
    const void* port = nullptr;
    IOServiceMatchingCallback callback = nullptr;
    void* reference = nullptr;
};

/// What stands behind a FakeMacos. The things given out hold on to it, so it outlives the last of
/// them.
struct MacState {
    explicit MacState(FakeMacos* its) : machine(its) {}

    FakeMacos* machine; ///< null after its end; guarded by `mutex` as everything is
    mutable std::mutex mutex;

    std::vector<std::string> calls;
    std::vector<std::string> misuse;
    std::map<std::string, int> alive;   ///< references by name
    std::map<std::string, int> counted; ///< things made so far, by kind

    std::vector<DevicePointer> attached;
    std::map<io_object_t, RegistryObject> objects;
    io_object_t lastObject = 0x1000;
    std::vector<Notification> notifications;
    std::map<const void*, const void*> runLoopOfPort;
    std::map<void*, void (*)(void*)> clients; ///< plug-ins and interfaces, each with its destructor
    std::set<const void*> handedOut;          ///< pointers that may still be given back
    /// What the system keeps until the process ends, and what has been given back, so that its use
    /// can be told.
    std::vector<std::shared_ptr<const void>> kept;

    // All of these want the mutex held.

    void call(std::string text) { calls.push_back(std::move(text)); }
    void wrong(std::string text) { misuse.push_back(std::move(text)); }
    /// "dictionary 1": the next of its kind.
    std::string nextName(const std::string& kind)
    {
        return kind + ' ' + std::to_string(++counted[kind]);
    }
    void made(const std::string& name) { ++alive[name]; }
    /// The same for a thing that its users hold by a pointer.
    template <typename Thing>
    Thing* madeAt(Thing* thing)
    {
        made(thing->name);
        handedOut.insert(thing);
        return thing;
    }
    /// Gives such a thing back and keeps it aside; false, and written down, when it is none, or not
    /// there any more.
    template <typename Thing>
    bool goneAt(const Thing* thing, const std::string& how)
    {
        if (handedOut.erase(thing) == 0) {
            wrong(how + " of something that is not there");
            return false;
        }
        kept.push_back(std::shared_ptr<const Thing>(thing));
        return gone(thing->name, how);
    }
    /// Gives one reference back; false, and written down, when there is none.
    bool gone(const std::string& name, const std::string& how);
    io_object_t add(RegistryObject object);
    std::string nameOf(io_object_t object) const;
    void notify(const std::string& kind, const DevicePointer& device);
};

/// The machine that the platform's functions work on.
std::shared_ptr<MacState> mac();

/// The calling thread's run loop.
CFRunLoopRef ownRunLoop();

/// " = 0xE00002C5"; nothing for a success.
std::string statusText(std::int64_t status);

} // namespace vornadel::test
