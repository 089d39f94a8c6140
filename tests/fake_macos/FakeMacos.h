#pragma once

#include <CoreServices/CoreServices.h>
#include <IOKit/IOKitLib.h>
#include <IOKit/usb/IOUSBLib.h>
#include <Security/Authorization.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace vornadel::test
{

struct MacState;

/// The behaviour of a device on the machine: the results of the calls on it.
struct MacDevice {
    std::uint16_t vendorId = 0;
    std::uint16_t productId = 0;
    std::uint32_t locationId = 0;
    std::uint16_t address = 0;

    bool givesPlugIn = true;
    kern_return_t plugInResult = kIOReturnSuccess; ///< of the creation, with or without a plug-in
    kern_return_t serviceReleaseResult = kIOReturnSuccess;
    bool givesInterface = true;
    HRESULT queryResult = 0;
    IOReturn vendorResult = kIOReturnSuccess; ///< otherwise the caller's variable is unchanged
    IOReturn productResult = kIOReturnSuccess;
    IOReturn locationResult = kIOReturnSuccess;
    IOReturn addressResult = kIOReturnSuccess;
    IOReturn openResult = kIOReturnSuccess;

    /// Answers a request on the open device; if unset, every request succeeds and moves all its
    /// bytes. Called without any lock.
    std::function<IOReturn(IOUSBDevRequest&)> onRequest{};
};

/// A fake Mac for the back end: it behaves as configured, logs every call, and tracks the objects
/// it has handed out. The functions of the headers beside this file use the machine that was
/// created last; there must be one.
///
/// Objects are named by kind and number: "dictionary 1", "port 2" and "iterator 1" count from their
/// creation; "service 0", "plug-in 0" and "interface 0" have the position of their device among
/// those attached at that time. Objects may outlive the machine.
///
/// Set it up before the threads start; the calls themselves may come from any thread.
class FakeMacos
{
public:
    FakeMacos();
    FakeMacos(const FakeMacos&) = delete;
    FakeMacos& operator=(const FakeMacos&) = delete;
    ~FakeMacos();

    /// The calls in order, for example "IOObjectRelease(service 0)" or "IOIteratorNext(iterator 1)
    /// = none".
    std::vector<std::string> calls() const;
    void forgetCalls();

    /// The objects that were not released, for example "iterator 1", in alphabetical order. For the
    /// run loop's sources only their ports count.
    std::vector<std::string> alive() const;
    /// Forbidden calls: an object released twice, used after its end, or of the wrong kind.
    std::vector<std::string> misuse() const;

    /// Destroys the plug-ins and interfaces that were not released, for tests that expect this.
    /// Nobody may use them afterwards.
    void reclaim();

    /// Adds a device at the end of the list, or removes the one at a position. Notifications come
    /// with the next turn of the run loop.
    void plug(MacDevice device);
    void unplug(std::size_t place = 0);
    /// Replaces all devices, without a notification.
    void attach(std::vector<MacDevice> devices);

    /// One turn of the calling thread's run loop: delivers what is pending for its sources.
    void turnRunLoop();

    bool givesDictionaries = true;
    kern_return_t matchingResult = kIOReturnSuccess; ///< of IOServiceGetMatchingServices
    std::set<int> refusedPorts{};                    ///< by their number
    std::set<int> portsWithoutSource{};
    std::map<std::string, kern_return_t> refusedNotifications{}; ///< by the kind of notification

    OSStatus authorizationResult = errAuthorizationSuccess; ///< otherwise: no authorization
    OSStatus executionResult = errAuthorizationSuccess;

    std::map<OSType, SInt32> gestalt{}; ///< the answers by selector
    /// Selectors that fail. Those in neither map are unknown to the system.
    std::map<OSType, OSErr> gestaltErrors{};

    std::optional<std::string> bundlePath{}; ///< none: there is no main bundle
    bool bundleHasUrl = true;
    bool urlHasPath = true;

private:
    std::shared_ptr<MacState> m_state;
};

} // namespace vornadel::test
