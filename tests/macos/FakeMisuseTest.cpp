// The fake's reports of misuse: what a back end with one line too many, one too few, or two in the
// wrong order would do.

#include "tests/fake_macos/FakeMacos.h"

#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/IOCFPlugIn.h>
#include <IOKit/IOKitLib.h>
#include <IOKit/usb/IOUSBLib.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <thread>

namespace vornadel::test
{
namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

constexpr mach_port_t kMainPort = 0;

/// A Mac with one device.
class FakeMisuse : public testing::Test
{
public:
    FakeMisuse() { mac.attach({MacDevice{.vendorId = 1, .productId = 2}}); }

protected:
    static io_iterator_t search()
    {
        io_iterator_t list = 0;
        IOServiceGetMatchingServices(kMainPort, IOServiceMatching("IOUSBDevice"), &list);
        return list;
    }

    static io_service_t service()
    {
        const io_iterator_t list = search();
        const io_service_t first = IOIteratorNext(list);
        IOObjectRelease(list);
        return first;
    }

    static IOCFPlugInInterface** plugInFor(io_service_t service)
    {
        IOCFPlugInInterface** plugIn = nullptr;
        SInt32 score = 0;
        IOCreatePlugInInterfaceForService(service, kIOUSBDeviceUserClientTypeID,
                                          kIOCFPlugInInterfaceID, &plugIn, &score);
        return plugIn;
    }

    static IOCFPlugInInterface** plugIn()
    {
        const io_service_t first = service();
        IOCFPlugInInterface** const made = plugInFor(first);
        IOObjectRelease(first);
        return made;
    }

    static IOUSBDeviceInterface** device()
    {
        IOCFPlugInInterface** const from = plugIn();
        void* interface = nullptr;
        (*from)->QueryInterface(from, CFUUIDGetUUIDBytes(kIOUSBDeviceInterfaceID), &interface);
        (*from)->Release(from);
        return static_cast<IOUSBDeviceInterface**>(interface);
    }

    static AuthorizationRef authorization()
    {
        AuthorizationRef made = nullptr;
        AuthorizationCreate(nullptr, kAuthorizationEmptyEnvironment, kAuthorizationFlagDefaults,
                            &made);
        return made;
    }

    /// The fake has reported this and nothing else, and nothing was leaked.
    void expectMisuse(const std::string& what)
    {
        EXPECT_THAT(mac.misuse(), ElementsAre(what));
        EXPECT_THAT(mac.alive(), IsEmpty());
    }

    FakeMacos mac;
};

TEST_F(FakeMisuse, NothingOfAllThatIsRight)
{
    IOUSBDeviceInterface** const interface = device();
    IOUSBDevRequest request{};
    (*interface)->USBDeviceOpen(interface);
    (*interface)->DeviceRequest(interface, &request);
    (*interface)->USBDeviceClose(interface);
    (*interface)->Release(interface);
    AuthorizationFree(authorization(), kAuthorizationFlagDefaults);
    EXPECT_THAT(mac.misuse(), IsEmpty());
    EXPECT_THAT(mac.alive(), IsEmpty());
}

TEST_F(FakeMisuse, DictionaryReleasedAfterTheSearchUsedItUp)
{
    const CFMutableDictionaryRef dictionary = IOServiceMatching("IOUSBDevice");
    io_iterator_t list = 0;
    IOServiceGetMatchingServices(kMainPort, dictionary, &list);
    IOObjectRelease(list);
    CFRelease(dictionary);
    expectMisuse("CFRelease of something that is not there, or is no caller's to release");
}

TEST_F(FakeMisuse, DictionaryReleasedAfterARefusedSearchUsedItUp)
{
    mac.matchingResult = kIOReturnError;
    const CFMutableDictionaryRef dictionary = IOServiceMatching("IOUSBDevice");
    io_iterator_t list = 0;
    IOServiceGetMatchingServices(kMainPort, dictionary, &list);
    CFRelease(dictionary);
    expectMisuse("CFRelease of something that is not there, or is no caller's to release");
}

TEST_F(FakeMisuse, DictionaryUsedTwice)
{
    const CFMutableDictionaryRef dictionary = IOServiceMatching("IOUSBDevice");
    for (int i = 0; i < 2; ++i) {
        io_iterator_t list = 0;
        IOServiceGetMatchingServices(kMainPort, dictionary, &list);
        IOObjectRelease(list);
    }
    expectMisuse("use of something that is not there");
}

TEST_F(FakeMisuse, NothingReleased)
{
    CFRelease(nullptr);
    expectMisuse("CFRelease of nothing");
}

TEST_F(FakeMisuse, ServiceReleasedTwice)
{
    const io_service_t first = service();
    IOObjectRelease(first);
    IOObjectRelease(first);
    expectMisuse("release of something unknown");
}

TEST_F(FakeMisuse, ServiceReleasedBeforeItsPlugInIsMade)
{
    const io_service_t first = service();
    IOObjectRelease(first);
    EXPECT_EQ(plugInFor(first), nullptr);
    expectMisuse("a plug-in for something unknown");
}

TEST_F(FakeMisuse, PlugInForAnIterator)
{
    const io_iterator_t list = search();
    EXPECT_EQ(plugInFor(list), nullptr);
    IOObjectRelease(list);
    expectMisuse("a plug-in for iterator 1");
}

TEST_F(FakeMisuse, PlugInReleasedTwice)
{
    IOCFPlugInInterface** const made = plugIn();
    (*made)->Release(made);
    (*made)->Release(made);
    expectMisuse("a call of plug-in 0 after its end");
}

TEST_F(FakeMisuse, PlugInQueriedAfterItsEnd)
{
    IOCFPlugInInterface** const made = plugIn();
    (*made)->Release(made);
    void* interface = nullptr;
    (*made)->QueryInterface(made, CFUUIDGetUUIDBytes(kIOUSBDeviceInterfaceID), &interface);
    EXPECT_EQ(interface, nullptr);
    expectMisuse("a call of plug-in 0 after its end");
}

TEST_F(FakeMisuse, InterfaceReleasedTwice)
{
    IOUSBDeviceInterface** const interface = device();
    (*interface)->Release(interface);
    (*interface)->Release(interface);
    expectMisuse("a call of interface 0 after its end");
}

TEST_F(FakeMisuse, InterfaceAskedAfterItsEnd)
{
    IOUSBDeviceInterface** const interface = device();
    (*interface)->Release(interface);
    UInt16 id = 0;
    (*interface)->GetDeviceVendor(interface, &id);
    EXPECT_EQ(id, 0);
    expectMisuse("a call of interface 0 after its end");
}

TEST_F(FakeMisuse, InterfaceOpenedAfterItsEnd)
{
    IOUSBDeviceInterface** const interface = device();
    (*interface)->Release(interface);
    (*interface)->USBDeviceOpen(interface);
    expectMisuse("a call of interface 0 after its end");
}

TEST_F(FakeMisuse, InterfaceReleasedWhileOpen)
{
    IOUSBDeviceInterface** const interface = device();
    (*interface)->USBDeviceOpen(interface);
    (*interface)->Release(interface);
    expectMisuse("interface 0 released while it was open");
}

TEST_F(FakeMisuse, InterfaceOpenedTwice)
{
    IOUSBDeviceInterface** const interface = device();
    (*interface)->USBDeviceOpen(interface);
    EXPECT_EQ((*interface)->USBDeviceOpen(interface), kIOReturnExclusiveAccess);
    (*interface)->USBDeviceClose(interface);
    (*interface)->Release(interface);
    expectMisuse("interface 0 opened twice");
}

TEST_F(FakeMisuse, InterfaceClosedWithoutOpen)
{
    IOUSBDeviceInterface** const interface = device();
    EXPECT_EQ((*interface)->USBDeviceClose(interface), kIOReturnNotOpen);
    (*interface)->Release(interface);
    expectMisuse("interface 0 closed while it was not open");
}

TEST_F(FakeMisuse, RequestWithoutOpen)
{
    IOUSBDeviceInterface** const interface = device();
    IOUSBDevRequest request{};
    EXPECT_EQ((*interface)->DeviceRequest(interface, &request), kIOReturnNotOpen);
    (*interface)->Release(interface);
    expectMisuse("a request on interface 0, which is not open");
}

TEST_F(FakeMisuse, IteratorReleasedTwice)
{
    const io_iterator_t list = search();
    IOObjectRelease(list);
    IOObjectRelease(list);
    expectMisuse("release of something unknown");
}

TEST_F(FakeMisuse, IteratorUsedAfterItsEnd)
{
    const io_iterator_t list = search();
    IOObjectRelease(list);
    EXPECT_EQ(IOIteratorNext(list), IO_OBJECT_NULL);
    expectMisuse("IOIteratorNext of something unknown");
}

TEST_F(FakeMisuse, ServiceTakenForAnIterator)
{
    const io_service_t first = service();
    EXPECT_EQ(IOIteratorNext(first), IO_OBJECT_NULL);
    IOObjectRelease(first);
    expectMisuse("IOIteratorNext of service 0");
}

TEST_F(FakeMisuse, AuthorizationFreedTwice)
{
    const AuthorizationRef made = authorization();
    AuthorizationFree(made, kAuthorizationFlagDefaults);
    EXPECT_EQ(AuthorizationFree(made, kAuthorizationFlagDefaults), errAuthorizationInvalidRef);
    expectMisuse("freeing of something that is not there");
}

TEST_F(FakeMisuse, AuthorizationUsedAfterItsEnd)
{
    const AuthorizationRef made = authorization();
    AuthorizationFree(made, kAuthorizationFlagDefaults);
    char* noArguments[] = {nullptr};
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    AuthorizationExecuteWithPrivileges(made, "/x", kAuthorizationFlagDefaults, noArguments,
                                       nullptr);
#pragma GCC diagnostic pop
    expectMisuse("a script run with something that is no authorization any more");
}

TEST_F(FakeMisuse, UrlReleasedTwice)
{
    mac.bundlePath = "/x";
    const CFURLRef url = CFBundleCopyBundleURL(CFBundleGetMainBundle());
    CFRelease(url);
    CFRelease(url);
    expectMisuse("CFRelease of something that is not there, or is no caller's to release");
}

TEST_F(FakeMisuse, UrlReadAfterItsEnd)
{
    mac.bundlePath = "/x";
    const CFURLRef url = CFBundleCopyBundleURL(CFBundleGetMainBundle());
    CFRelease(url);
    std::array<UInt8, 16> path{};
    CFURLGetFileSystemRepresentation(url, 1, path.data(), path.size());
    expectMisuse("the path of url 1, which is not there");
}

TEST_F(FakeMisuse, UrlOfNoBundle)
{
    EXPECT_EQ(CFBundleCopyBundleURL(nullptr), nullptr);
    expectMisuse("the URL of no bundle");
}

TEST_F(FakeMisuse, MainBundleReleased)
{
    mac.bundlePath = "/x";
    CFRelease(CFBundleGetMainBundle());
    expectMisuse("CFRelease of something that is not there, or is no caller's to release");
}

TEST_F(FakeMisuse, UuidReleased)
{
    CFRelease(kIOUSBDeviceInterfaceID);
    expectMisuse("CFRelease of something that is not there, or is no caller's to release");
}

TEST_F(FakeMisuse, SourceAskedOfNoPort)
{
    EXPECT_EQ(IONotificationPortGetRunLoopSource(nullptr), nullptr);
    expectMisuse("the source of no port");
}

TEST_F(FakeMisuse, RunLoopGivenNoSource)
{
    CFRunLoopAddSource(CFRunLoopGetCurrent(), nullptr, kCFRunLoopDefaultMode);
    expectMisuse("a run loop given no source");
}

/// A Mac whose devices a program watches, and one that is plugged in.
class FakeNotification : public FakeMisuse
{
protected:
    /// Registers, with the source of the port in a mode of the run loop.
    void watch(CFRunLoopMode mode)
    {
        const IONotificationPortRef port = IONotificationPortCreate(kMainPort);
        CFRunLoopAddSource(CFRunLoopGetCurrent(), IONotificationPortGetRunLoopSource(port), mode);
        IOServiceAddMatchingNotification(
            port, kIOFirstMatchNotification, IOServiceMatching("IOUSBDevice"),
            [](void* told, io_iterator_t /*list*/) { ++*static_cast<int*>(told); }, &m_told,
            &m_list);
    }

    void arm() const
    {
        while (const io_service_t each = IOIteratorNext(m_list)) {
            IOObjectRelease(each);
        }
    }

    int toldOfADevice()
    {
        mac.plug({});
        mac.turnRunLoop();
        return m_told;
    }

    io_iterator_t m_list = 0;
    int m_told = 0;
};

TEST_F(FakeNotification, ComesWhenItsListWasTaken)
{
    watch(kCFRunLoopDefaultMode);
    arm();
    EXPECT_EQ(toldOfADevice(), 1);
    EXPECT_THAT(mac.misuse(), IsEmpty());
}

TEST_F(FakeNotification, NeverComesWhenItsListIsNotTaken)
{
    watch(kCFRunLoopDefaultMode);
    EXPECT_EQ(toldOfADevice(), 0);
}

TEST_F(FakeNotification, NeverComesWhenItsListIsGivenBack)
{
    watch(kCFRunLoopDefaultMode);
    arm();
    IOObjectRelease(m_list);
    EXPECT_EQ(toldOfADevice(), 0);
    EXPECT_THAT(mac.misuse(), IsEmpty());
}

TEST_F(FakeNotification, NeverComesInAnotherMode)
{
    watch(nullptr);
    arm();
    EXPECT_EQ(toldOfADevice(), 0);
}

TEST_F(FakeNotification, NeverComesOnAnotherThread)
{
    watch(kCFRunLoopDefaultMode);
    arm();
    mac.plug({});
    std::thread([this] { mac.turnRunLoop(); }).join();
    EXPECT_EQ(m_told, 0);
    mac.turnRunLoop();
    EXPECT_EQ(m_told, 1);
}

TEST_F(FakeNotification, WantsAPort)
{
    const CFMutableDictionaryRef dictionary = IOServiceMatching("IOUSBDevice");
    EXPECT_EQ(IOServiceAddMatchingNotification(nullptr, kIOFirstMatchNotification, dictionary,
                                               nullptr, nullptr, &m_list),
              kIOReturnBadArgument);
    CFRelease(dictionary);
    expectMisuse("a notification without a port");
}

TEST_F(FakeNotification, GivesItsSourceNoCallerToRelease)
{
    CFRelease(IONotificationPortGetRunLoopSource(IONotificationPortCreate(kMainPort)));
    EXPECT_THAT(
        mac.misuse(),
        ElementsAre("CFRelease of something that is not there, or is no caller's to release"));
}

} // namespace
} // namespace vornadel::test
