#pragma once

#include "tests/fake_macos/FakeMacos.h"

#include <atomic>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace vornadel::test
{

/// The machine's record of a device.
struct AttachedDevice {
    AttachedDevice(MacDevice its, std::size_t at) : behaviour(std::move(its)), place(at) {}

    MacDevice behaviour;
    std::size_t place = 0;
    bool present = true;
    const void* holder = nullptr; ///< the interface that has it open
};

using DevicePointer = std::shared_ptr<AttachedDevice>;

/// The object behind an `io_object_t`: an iterator over devices, or the service of one.
struct RegistryObject {
    std::string name;
    bool isIterator = false;
    std::deque<DevicePointer> devices; ///< the remaining ones; for a service, its own
    bool exhausted = false;            ///< read to its end, so it may notify again
};

struct Notification {
    std::string kind;
    io_iterator_t list = 0;
    const void* port = nullptr;
    IOServiceMatchingCallback callback = nullptr;
    void* reference = nullptr;
};

/// The state of a FakeMacos. The objects handed out share it, so it outlives the last of them.
struct MacState {
    explicit MacState(FakeMacos* its) : machine(its) {}

    FakeMacos* machine; ///< null after its end; guarded by `mutex` like everything here
    mutable std::mutex mutex;

    std::vector<std::string> calls;
    std::vector<std::string> misuse;
    std::map<std::string, int> alive;   ///< references by name
    std::map<std::string, int> counted; ///< objects created so far, by kind

    std::vector<DevicePointer> attached;
    std::map<io_object_t, RegistryObject> objects;
    io_object_t lastObject = 0x1000;
    std::vector<Notification> notifications;
    std::map<const void*, const void*> runLoopOfPort;
    std::map<void*, void (*)(void*)> clients; ///< plug-ins and interfaces, each with its destructor
    std::set<const void*> handedOut;          ///< pointers that may still be released
    /// Objects that the system keeps until the process ends, and released ones, to detect their
    /// use.
    std::vector<std::shared_ptr<const void>> kept;

    // The mutex must be held for all of these.

    void call(std::string text) { calls.push_back(std::move(text)); }
    void wrong(std::string text) { misuse.push_back(std::move(text)); }
    /// The name of the next object of a kind, for example "dictionary 1".
    std::string nextName(const std::string& kind)
    {
        return kind + ' ' + std::to_string(++counted[kind]);
    }
    void made(const std::string& name) { ++alive[name]; }
    /// The same for an object that users hold by a pointer.
    template <typename Thing>
    Thing* madeAt(Thing* thing)
    {
        made(thing->name);
        handedOut.insert(thing);
        return thing;
    }
    /// Releases such an object and keeps it aside. If it is invalid or already released: false, and
    /// reported as misuse.
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
    /// Releases one reference. If there is none: false, and reported as misuse.
    bool gone(const std::string& name, const std::string& how);
    io_object_t add(RegistryObject object);
    std::string nameOf(io_object_t object) const;
    /// Puts a device at the end of the list.
    DevicePointer attach(MacDevice device);
    void notify(const std::string& kind, const DevicePointer& device);
};

/// The machine that the platform's functions use, locked.
class CurrentMac
{
public:
    CurrentMac();

    MacState* operator->() const { return m_state.get(); }
    MacState& operator*() const { return *m_state; }
    const std::shared_ptr<MacState>& shared() const { return m_state; }

private:
    std::shared_ptr<MacState> m_state;
    std::unique_lock<std::mutex> m_lock;
};

/// The calling thread's run loop.
CFRunLoopRef ownRunLoop();

/// For example " = 0xE00002C5"; empty for a success.
std::string statusText(std::int64_t status);

} // namespace vornadel::test
