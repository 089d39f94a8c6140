// What the fake says of callers that do wrong. Each of these is what a back end with one line too many would do.

#include "tests/fake_macos/FakeMacos.h"

#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/IOCFPlugIn.h>
#include <IOKit/IOKitLib.h>
#include <IOKit/usb/IOUSBLib.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vornadel::test
{
namespace
{

using testing::IsEmpty;
using testing::Not;

constexpr mach_port_t kMainPort = 0;

/// A Mac with one device.
class FakeMisuse : public testing::Test
{
public:
    FakeMisuse() { mac.attach({MacDevice{.vendorId = 1, .productId = 2}}); }

protected:
    static IOCFPlugInInterface** plugIn()
    {
        io_iterator_t list = 0;
        IOServiceGetMatchingServices(kMainPort, IOServiceMatching("IOUSBDevice"), &list);
        const io_service_t s = IOIteratorNext(list);
        IOCFPlugInInterface** p = nullptr;
        SInt32 score = 0;
        IOCreatePlugInInterfaceForService(s, kIOUSBDeviceUserClientTypeID, kIOCFPlugInInterfaceID, &p,
                                          &score);
        IOObjectRelease(s);
        IOObjectRelease(list);
        return p;
    }

    static IOUSBDeviceInterface** device()
    {
        IOCFPlugInInterface** p = plugIn();
        void* d = nullptr;
        (*p)->QueryInterface(p, CFUUIDGetUUIDBytes(kIOUSBDeviceInterfaceID), &d);
        (*p)->Release(p);
        return static_cast<IOUSBDeviceInterface**>(d);
    }

    FakeMacos mac;
};

TEST_F(FakeMisuse, DictionaryReleasedAfterTheSearchUsedItUp)
{
    CFMutableDictionaryRef d = IOServiceMatching("IOUSBDevice");
    io_iterator_t l = 0;
    IOServiceGetMatchingServices(kMainPort, d, &l);
    CFRelease(d);
    EXPECT_THAT(mac.misuse(), Not(IsEmpty()));
}

TEST_F(FakeMisuse, DictionaryUsedTwice)
{
    CFMutableDictionaryRef d = IOServiceMatching("IOUSBDevice");
    io_iterator_t l = 0;
    IOServiceGetMatchingServices(kMainPort, d, &l);
    IOServiceGetMatchingServices(kMainPort, d, &l);
    EXPECT_THAT(mac.misuse(), Not(IsEmpty()));
}

TEST_F(FakeMisuse, PlugInReleasedTwice)
{
    IOCFPlugInInterface** p = plugIn();
    (*p)->Release(p);
    (*p)->Release(p);
    EXPECT_THAT(mac.misuse(), Not(IsEmpty()));
}

TEST_F(FakeMisuse, PlugInQueriedAfterItsEnd)
{
    IOCFPlugInInterface** p = plugIn();
    (*p)->Release(p);
    void* d = nullptr;
    (*p)->QueryInterface(p, CFUUIDGetUUIDBytes(kIOUSBDeviceInterfaceID), &d);
    EXPECT_THAT(mac.misuse(), Not(IsEmpty()));
}

TEST_F(FakeMisuse, InterfaceReleasedTwice)
{
    auto d = device();
    (*d)->Release(d);
    (*d)->Release(d);
    EXPECT_THAT(mac.misuse(), Not(IsEmpty()));
}

TEST_F(FakeMisuse, InterfaceAskedAfterItsEnd)
{
    auto d = device();
    (*d)->Release(d);
    UInt16 v = 0;
    (*d)->GetDeviceVendor(d, &v);
    EXPECT_THAT(mac.misuse(), Not(IsEmpty()));
}

TEST_F(FakeMisuse, InterfaceOpenedAfterItsEnd)
{
    auto d = device();
    (*d)->Release(d);
    (*d)->USBDeviceOpen(d);
    EXPECT_THAT(mac.misuse(), Not(IsEmpty()));
}

TEST_F(FakeMisuse, ReleasedWhileOpen)
{
    auto d = device();
    (*d)->USBDeviceOpen(d);
    (*d)->Release(d);
    EXPECT_THAT(mac.misuse(), Not(IsEmpty()));
}

TEST_F(FakeMisuse, RequestWithoutOpen)
{
    auto d = device();
    IOUSBDevRequest r{};
    (*d)->DeviceRequest(d, &r);
    (*d)->Release(d);
    EXPECT_THAT(mac.misuse(), Not(IsEmpty()));
}

TEST_F(FakeMisuse, IteratorReleasedTwice)
{
    io_iterator_t l = 0;
    IOServiceGetMatchingServices(kMainPort, IOServiceMatching("IOUSBDevice"), &l);
    IOObjectRelease(l);
    IOObjectRelease(l);
    EXPECT_THAT(mac.misuse(), Not(IsEmpty()));
}

TEST_F(FakeMisuse, IteratorUsedAfterItsEnd)
{
    io_iterator_t l = 0;
    IOServiceGetMatchingServices(kMainPort, IOServiceMatching("IOUSBDevice"), &l);
    IOObjectRelease(l);
    IOIteratorNext(l);
    EXPECT_THAT(mac.misuse(), Not(IsEmpty()));
}

TEST_F(FakeMisuse, ListOfANotificationReleased)
{
    io_iterator_t l = 0;
    IONotificationPortRef p = IONotificationPortCreate(kMainPort);
    IOServiceAddMatchingNotification(
        p, kIOFirstMatchNotification, IOServiceMatching("IOUSBDevice"), [](void*, io_iterator_t) {}, nullptr,
        &l);
    IOObjectRelease(l);
    mac.plug({});
    EXPECT_THAT(mac.misuse(), IsEmpty()) << "whoever does that is told no more";
}

TEST_F(FakeMisuse, PlugInForAnIterator)
{
    io_iterator_t l = 0;
    IOServiceGetMatchingServices(kMainPort, IOServiceMatching("IOUSBDevice"), &l);
    IOCFPlugInInterface** p = nullptr;
    SInt32 s = 0;
    IOCreatePlugInInterfaceForService(l, kIOUSBDeviceUserClientTypeID, kIOCFPlugInInterfaceID, &p, &s);
    EXPECT_THAT(mac.misuse(), Not(IsEmpty()));
}

TEST_F(FakeMisuse, AuthorizationFreedTwice)
{
    AuthorizationRef a = nullptr;
    AuthorizationCreate(nullptr, nullptr, 0, &a);
    AuthorizationFree(a, 0);
    AuthorizationFree(a, 0);
    EXPECT_THAT(mac.misuse(), Not(IsEmpty()));
}

TEST_F(FakeMisuse, AuthorizationUsedAfterItsEnd)
{
    AuthorizationRef a = nullptr;
    AuthorizationCreate(nullptr, nullptr, 0, &a);
    AuthorizationFree(a, 0);
    char* none[] = {nullptr};
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    AuthorizationExecuteWithPrivileges(a, "/x", 0, none, nullptr);
#pragma GCC diagnostic pop
    EXPECT_THAT(mac.misuse(), Not(IsEmpty()));
}

TEST_F(FakeMisuse, UrlReleasedTwice)
{
    mac.bundlePath = "/x";
    CFURLRef u = CFBundleCopyBundleURL(CFBundleGetMainBundle());
    CFRelease(u);
    CFRelease(u);
    EXPECT_THAT(mac.misuse(), Not(IsEmpty()));
}

TEST_F(FakeMisuse, MainBundleReleased)
{
    mac.bundlePath = "/x";
    CFRelease(CFBundleGetMainBundle());
    EXPECT_THAT(mac.misuse(), Not(IsEmpty()));
}

TEST_F(FakeMisuse, SourceReleased)
{
    IONotificationPortRef p = IONotificationPortCreate(kMainPort);
    CFRelease(IONotificationPortGetRunLoopSource(p));
    EXPECT_THAT(mac.misuse(), Not(IsEmpty()));
}

TEST_F(FakeMisuse, UuidReleased)
{
    CFRelease(kIOUSBDeviceInterfaceID);
    EXPECT_THAT(mac.misuse(), Not(IsEmpty()));
}
} // namespace
} // namespace vornadel::test
