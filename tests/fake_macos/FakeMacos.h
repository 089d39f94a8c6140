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

/// How a device on the machine behaves. The results are those of the calls that concern it.
struct MacDevice {
    std::uint16_t vendorId = 0;
    std::uint16_t productId = 0;

    bool givesPlugIn = true;
    kern_return_t plugInResult = kIOReturnSuccess; ///< of the creation, with or without a plug-in
    kern_return_t serviceReleaseResult = kIOReturnSuccess;
    bool givesInterface = true;
    HRESULT queryResult = 0;
    IOReturn vendorResult = kIOReturnSuccess; ///< anything else leaves the caller's word alone
    IOReturn productResult = kIOReturnSuccess;
    IOReturn openResult = kIOReturnSuccess;

    /// Answers a request on the open device; without it every request succeeds and moves what it
    /// asks for. Runs without any lock, as the two below do.
    std::function<IOReturn(IOUSBDevRequest&)> onRequest{};
    std::function<IOReturn()> onOpen{}; ///< its result counts when `openResult` is a success
    std::function<void()> onClose{};
};

/// A Mac for the back end to work on: it does as it is told, writes every call down, and keeps
/// account of what it has given out. The functions of the headers beside this file reach the
/// machine that was made or used last; there must be one.
///
/// Things are called by kind and number: "dictionary 1", "port 2" and "iterator 1" are counted as
/// they are made; "service 0", "plug-in 0" and "interface 0" carry the place of their device among
/// those attached when they were made. What the machine has given out may outlive it.
///
/// Set it up before the threads start; the calls themselves may come from any thread.
class FakeMacos
{
public:
    FakeMacos();
    FakeMacos(const FakeMacos&) = delete;
    FakeMacos& operator=(const FakeMacos&) = delete;
    ~FakeMacos();

    /// Makes this the machine that the functions work on.
    void use();

    /// The calls in their order, as "IOObjectRelease(service 0)" or "IOIteratorNext(iterator 1) =
    /// none".
    std::vector<std::string> calls() const;
    void forgetCalls();

    /// What was given out and not given back, as "iterator 1", in alphabetical order. Of the run
    /// loop's sources only their ports count.
    std::vector<std::string> alive() const;
    /// Calls that no caller may make: a thing given back twice, used after its end, or of another
    /// kind than the call wants.
    std::vector<std::string> misuse() const;

    /// Destroys the plug-ins and interfaces that were not given back, for tests in which that is as
    /// it should be. Nobody may use them afterwards.
    void reclaim();

    /// Puts a device at the end of the list, or takes the one at a place away. Notifications come
    /// with the next turn.
    void plug(MacDevice device);
    void unplug(std::size_t place = 0);
    /// Replaces all devices, without a notification.
    void attach(std::vector<MacDevice> devices);

    /// One turn of the calling thread's run loop: delivers what waits for its sources.
    void turnRunLoop();

    bool givesDictionaries = true;
    kern_return_t matchingResult = kIOReturnSuccess; ///< of IOServiceGetMatchingServices
    std::set<int> refusedPorts{};                    ///< by their number
    std::set<int> portsWithoutSource{};
    std::map<std::string, kern_return_t> refusedNotifications{}; ///< by the kind of notification

    OSStatus authorizationResult = errAuthorizationSuccess; ///< otherwise: no authorization
    OSStatus executionResult = errAuthorizationSuccess;

    std::map<OSType, SInt32> gestalt{};      ///< the answers by selector
    std::map<OSType, OSErr> gestaltErrors{}; ///< selectors that fail; others are unknown

    std::optional<std::string> bundlePath{}; ///< none: there is no main bundle
    bool bundleHasUrl = true;
    bool urlHasPath = true;

private:
    std::shared_ptr<MacState> m_state;
};

} // namespace vornadel::test
