// The part of Core Foundation that the macOS back end uses, for systems without it. Names, types
// and values are the platform's; on a Mac, platform/macos/Contract.cpp checks them against the
// platform's own headers. The functions use the machine of tests/fake_macos/FakeMacos.h.

#pragma once

#include <cstdint>

using UInt8 = unsigned char;
using SInt16 = short;
using UInt16 = unsigned short;
using SInt32 = int;
using UInt32 = unsigned int;
using UInt64 = unsigned long long;
using Boolean = unsigned char;
using OSErr = SInt16;
using OSStatus = SInt32;
using OSType = UInt32;

using CFIndex = long;
using CFTypeRef = const void*;

struct __CFAllocator;
struct __CFBundle;
struct __CFDictionary;
struct __CFRunLoop;
struct __CFRunLoopSource;
struct __CFString;
struct __CFURL;
struct __CFUUID;

using CFAllocatorRef = const __CFAllocator*;
using CFBundleRef = __CFBundle*;
using CFDictionaryRef = const __CFDictionary*;
using CFMutableDictionaryRef = __CFDictionary*;
using CFRunLoopMode = const __CFString*;
using CFRunLoopRef = __CFRunLoop*;
using CFRunLoopSourceRef = __CFRunLoopSource*;
using CFStringRef = const __CFString*;
using CFURLRef = const __CFURL*;
using CFUUIDRef = const __CFUUID*;

struct CFUUIDBytes {
    UInt8 byte0, byte1, byte2, byte3, byte4, byte5, byte6, byte7;
    UInt8 byte8, byte9, byte10, byte11, byte12, byte13, byte14, byte15;
};

extern "C" {

extern const CFRunLoopMode kCFRunLoopDefaultMode;

void CFRelease(CFTypeRef object);

CFBundleRef CFBundleGetMainBundle();
CFURLRef CFBundleCopyBundleURL(CFBundleRef bundle);
Boolean CFURLGetFileSystemRepresentation(CFURLRef url, Boolean absolute, UInt8* buffer,
                                         CFIndex size);

CFRunLoopRef CFRunLoopGetCurrent();
void CFRunLoopAddSource(CFRunLoopRef runLoop, CFRunLoopSourceRef source, CFRunLoopMode mode);

CFUUIDRef CFUUIDGetConstantUUIDWithBytes(CFAllocatorRef allocator, UInt8 byte0, UInt8 byte1,
                                         UInt8 byte2, UInt8 byte3, UInt8 byte4, UInt8 byte5,
                                         UInt8 byte6, UInt8 byte7, UInt8 byte8, UInt8 byte9,
                                         UInt8 byte10, UInt8 byte11, UInt8 byte12, UInt8 byte13,
                                         UInt8 byte14, UInt8 byte15);
CFUUIDBytes CFUUIDGetUUIDBytes(CFUUIDRef uuid);

} // extern "C"
