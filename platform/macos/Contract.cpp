// This folder's assumptions about the platform: types, constants, layouts and identifiers. Compiled
// with the platform's own headers on a Mac, and with the tests' stand-in headers elsewhere, so that
// the two cannot drift apart. Nothing here runs.

#include <CoreFoundation/CoreFoundation.h>
#include <CoreServices/CoreServices.h>
#include <IOKit/IOCFPlugIn.h>
#include <IOKit/IOKitLib.h>
#include <IOKit/usb/IOUSBLib.h>
#include <Security/Authorization.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string_view>
#include <type_traits>

namespace vornadel
{

namespace
{

// Numbers.

template <typename Type, typename Expected>
constexpr bool kIs = std::is_same_v<Type, Expected>;

static_assert(sizeof(void*) == 8, "every Mac since 10.7, and the offsets below");
static_assert(kIs<UInt8, unsigned char> && kIs<UInt16, unsigned short> &&
              kIs<UInt32, unsigned int>);
static_assert(kIs<SInt32, int> && kIs<Boolean, unsigned char> && kIs<CFIndex, long>);
static_assert(kIs<OSErr, short> && kIs<OSStatus, int> && kIs<OSType, unsigned int>);
static_assert(kIs<HRESULT, int> && kIs<ULONG, unsigned int> && kIs<LPVOID, void*> &&
              kIs<REFIID, CFUUIDBytes>);
static_assert(kIs<kern_return_t, int> && kIs<IOReturn, int> && kIs<mach_port_t, unsigned int>);
static_assert(kIs<io_object_t, mach_port_t> && kIs<io_iterator_t, io_object_t> &&
              kIs<io_service_t, io_object_t>);
static_assert(kIs<AuthorizationFlags, unsigned int>);
static_assert(kIs<CFTypeRef, const void*> &&
              std::is_convertible_v<CFMutableDictionaryRef, CFDictionaryRef>);

// Constants.

constexpr std::uint32_t bits(IOReturn status) { return static_cast<std::uint32_t>(status); }

static_assert(kIOReturnSuccess == 0 && noErr == 0 && errAuthorizationSuccess == 0);
static_assert(bits(kIOReturnError) == 0xE00002BC && bits(kIOReturnNoMemory) == 0xE00002BD);
static_assert(bits(kIOReturnNoDevice) == 0xE00002C0 && bits(kIOReturnNotPrivileged) == 0xE00002C1);
static_assert(bits(kIOReturnBadArgument) == 0xE00002C2 &&
              bits(kIOReturnExclusiveAccess) == 0xE00002C5);
static_assert(bits(kIOReturnBusy) == 0xE00002D5 && bits(kIOReturnNotAttached) == 0xE00002D9 &&
              bits(kIOReturnNotPermitted) == 0xE00002E2);
static_assert(bits(kIOReturnTimeout) == 0xE00002D6 && bits(kIOReturnUnderrun) == 0xE00002E7);
static_assert(bits(kIOUSBPipeStalled) == 0xE000404F &&
              bits(kIOUSBTransactionTimeout) == 0xE0004051);
static_assert(bits(kIOReturnNotOpen) == 0xE00002CD && bits(kIOReturnNotFound) == 0xE00002F0);
static_assert(IO_OBJECT_NULL == 0);
static_assert(kAuthorizationFlagDefaults == 0 &&
              static_cast<const void*>(kAuthorizationEmptyEnvironment) == nullptr);
static_assert(errAuthorizationInvalidRef == -60002 && errAuthorizationDenied == -60005);
static_assert(errAuthorizationCanceled == -60006);
static_assert(gestaltSystemVersion == 0x73797376 && gestaltSystemVersionMajor == 0x73797331);
static_assert(gestaltSystemVersionMinor == 0x73797332 && gestaltSystemVersionBugFix == 0x73797333);
static_assert(gestaltUndefSelectorErr == -5551);
static_assert(std::string_view(kIOFirstMatchNotification) == "IOServiceFirstMatch");
static_assert(std::string_view(kIOTerminatedNotification) == "IOServiceTerminate");
static_assert(kIs<decltype(kCFRunLoopDefaultMode), const CFRunLoopMode>);

// Records.

static_assert(sizeof(IOUSBDevRequest) == 24 && std::is_trivially_copyable_v<IOUSBDevRequest>);
static_assert(offsetof(IOUSBDevRequest, bmRequestType) == 0 &&
              kIs<decltype(IOUSBDevRequest::bmRequestType), UInt8>);
static_assert(offsetof(IOUSBDevRequest, bRequest) == 1 &&
              kIs<decltype(IOUSBDevRequest::bRequest), UInt8>);
static_assert(offsetof(IOUSBDevRequest, wValue) == 2 &&
              kIs<decltype(IOUSBDevRequest::wValue), UInt16>);
static_assert(offsetof(IOUSBDevRequest, wIndex) == 4 &&
              kIs<decltype(IOUSBDevRequest::wIndex), UInt16>);
static_assert(offsetof(IOUSBDevRequest, wLength) == 6 &&
              kIs<decltype(IOUSBDevRequest::wLength), UInt16>);
static_assert(offsetof(IOUSBDevRequest, pData) == 8 &&
              kIs<decltype(IOUSBDevRequest::pData), void*>);
static_assert(offsetof(IOUSBDevRequest, wLenDone) == 16 &&
              kIs<decltype(IOUSBDevRequest::wLenDone), UInt32>);

static_assert(sizeof(CFUUIDBytes) == 16 && std::is_trivially_copyable_v<CFUUIDBytes>);
static_assert(offsetof(CFUUIDBytes, byte0) == 0 && offsetof(CFUUIDBytes, byte15) == 15);

// Tables of functions, by their slots.

#define SLOT(TABLE, MEMBER) (offsetof(TABLE, MEMBER) / sizeof(void*))

using GetWord = IOReturn (*)(void*, UInt16*);
using Simple = IOReturn (*)(void*);
using Query = HRESULT (*)(void*, REFIID, LPVOID*);
using Count = ULONG (*)(void*);

static_assert(SLOT(IOCFPlugInInterface, QueryInterface) == 1 &&
              SLOT(IOCFPlugInInterface, Release) == 3);
static_assert(kIs<decltype(IOCFPlugInInterface::QueryInterface), Query>);
static_assert(kIs<decltype(IOCFPlugInInterface::Release), Count>);

static_assert(SLOT(IOUSBDeviceInterface, QueryInterface) == 1 &&
              SLOT(IOUSBDeviceInterface, AddRef) == 2);
static_assert(SLOT(IOUSBDeviceInterface, Release) == 3);
static_assert(SLOT(IOUSBDeviceInterface, USBDeviceOpen) == 8 &&
              SLOT(IOUSBDeviceInterface, USBDeviceClose) == 9);
static_assert(SLOT(IOUSBDeviceInterface, GetDeviceVendor) == 13 &&
              SLOT(IOUSBDeviceInterface, GetDeviceProduct) == 14);
static_assert(SLOT(IOUSBDeviceInterface, GetDeviceAddress) == 16 &&
              SLOT(IOUSBDeviceInterface, GetLocationID) == 20);
static_assert(SLOT(IOUSBDeviceInterface, DeviceRequest) == 26);
static_assert(kIs<decltype(IOUSBDeviceInterface::Release), Count>);
static_assert(kIs<decltype(IOUSBDeviceInterface::USBDeviceOpen), Simple>);
static_assert(kIs<decltype(IOUSBDeviceInterface::USBDeviceClose), Simple>);
static_assert(kIs<decltype(IOUSBDeviceInterface::GetDeviceVendor), GetWord>);
static_assert(kIs<decltype(IOUSBDeviceInterface::GetDeviceProduct), GetWord>);
static_assert(kIs<decltype(IOUSBDeviceInterface::GetDeviceAddress), GetWord>);
static_assert(kIs<decltype(IOUSBDeviceInterface::GetLocationID), IOReturn (*)(void*, UInt32*)>);
static_assert(
    kIs<decltype(IOUSBDeviceInterface::DeviceRequest), IOReturn (*)(void*, IOUSBDevRequest*)>);

// Identifiers. Each is a macro that lists its bytes as arguments of a call; its text is parsed.

#define TEXT_OF_TEXT(X) #X
#define TEXT_OF(X) TEXT_OF_TEXT(X)

using IdBytes = std::array<unsigned, 16>;

constexpr unsigned hexDigit(char digit)
{
    return static_cast<unsigned>(digit <= '9' ? digit - '0' : (digit | 0x20) - 'a' + 10);
}

/// The bytes in the text of a call: its first argument is the allocator, the others are the bytes
/// in hexadecimal.
constexpr IdBytes bytesOf(std::string_view call)
{
    IdBytes bytes{};
    for (unsigned& byte : bytes) {
        call.remove_prefix(call.find("0x") + 2);
        for (; hexDigit(call.front()) < 16; call.remove_prefix(1)) {
            byte = byte * 16 + hexDigit(call.front());
        }
    }
    // With more bytes than expected the result is empty.
    return call.find("0x") == std::string_view::npos ? bytes : IdBytes{};
}

constexpr std::string_view afterAllocator(std::string_view call)
{
    return call.substr(call.find(','));
}

static_assert(bytesOf(afterAllocator(TEXT_OF(kIOUSBDeviceUserClientTypeID))) ==
              IdBytes{0x9D, 0xC7, 0xB7, 0x80, 0x9E, 0xC0, 0x11, 0xD4, 0xA5, 0x4F, 0x00, 0x0A, 0x27,
                      0x05, 0x28, 0x61});
static_assert(bytesOf(afterAllocator(TEXT_OF(kIOCFPlugInInterfaceID))) ==
              IdBytes{0xC2, 0x44, 0xE8, 0x58, 0x10, 0x9C, 0x11, 0xD4, 0x91, 0xD4, 0x00, 0x50, 0xE4,
                      0xC6, 0x42, 0x6F});
static_assert(bytesOf(afterAllocator(TEXT_OF(kIOUSBDeviceInterfaceID))) ==
              IdBytes{0x5C, 0x81, 0x87, 0xD0, 0x9E, 0xF3, 0x11, 0xD4, 0x8B, 0x45, 0x00, 0x0A, 0x27,
                      0x05, 0x28, 0x61});

// Functions.

#define FUNCTION(NAME, ...) static_assert(kIs<decltype(&NAME), __VA_ARGS__>)

FUNCTION(CFRelease, void (*)(CFTypeRef));
FUNCTION(CFBundleGetMainBundle, CFBundleRef (*)());
FUNCTION(CFBundleCopyBundleURL, CFURLRef (*)(CFBundleRef));
FUNCTION(CFURLGetFileSystemRepresentation, Boolean (*)(CFURLRef, Boolean, UInt8*, CFIndex));
FUNCTION(CFRunLoopGetCurrent, CFRunLoopRef (*)());
FUNCTION(CFRunLoopAddSource, void (*)(CFRunLoopRef, CFRunLoopSourceRef, CFRunLoopMode));
FUNCTION(CFUUIDGetConstantUUIDWithBytes,
         CFUUIDRef (*)(CFAllocatorRef, UInt8, UInt8, UInt8, UInt8, UInt8, UInt8, UInt8, UInt8,
                       UInt8, UInt8, UInt8, UInt8, UInt8, UInt8, UInt8, UInt8));
FUNCTION(CFUUIDGetUUIDBytes, CFUUIDBytes (*)(CFUUIDRef));

FUNCTION(IOServiceMatching, CFMutableDictionaryRef (*)(const char*));
FUNCTION(IOServiceGetMatchingServices,
         kern_return_t (*)(mach_port_t, CFDictionaryRef, io_iterator_t*));
FUNCTION(IOIteratorNext, io_object_t (*)(io_iterator_t));
FUNCTION(IOObjectRelease, kern_return_t (*)(io_object_t));
FUNCTION(IOCreatePlugInInterfaceForService,
         kern_return_t (*)(io_service_t, CFUUIDRef, CFUUIDRef, IOCFPlugInInterface***, SInt32*));
static_assert(kIs<IOServiceMatchingCallback, void (*)(void*, io_iterator_t)>);
FUNCTION(IONotificationPortCreate, IONotificationPortRef (*)(mach_port_t));
FUNCTION(IONotificationPortGetRunLoopSource, CFRunLoopSourceRef (*)(IONotificationPortRef));
FUNCTION(IOServiceAddMatchingNotification,
         kern_return_t (*)(IONotificationPortRef, const char*, CFDictionaryRef,
                           IOServiceMatchingCallback, void*, io_iterator_t*));

FUNCTION(AuthorizationCreate,
         OSStatus (*)(const AuthorizationRights*, const AuthorizationEnvironment*,
                      AuthorizationFlags, AuthorizationRef*));
FUNCTION(AuthorizationFree, OSStatus (*)(AuthorizationRef, AuthorizationFlags));

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
static_assert(kIs<decltype(kIOMasterPortDefault), const mach_port_t>);
FUNCTION(AuthorizationExecuteWithPrivileges,
         OSStatus (*)(AuthorizationRef, const char*, AuthorizationFlags, char* const*,
                      std::FILE**));
FUNCTION(Gestalt, OSErr (*)(OSType, SInt32*));
#pragma GCC diagnostic pop

} // namespace

} // namespace vornadel
