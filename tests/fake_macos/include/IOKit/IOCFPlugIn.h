// The plug-ins through which programs talk to a driver; see CoreFoundation.h.

#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/IOKitLib.h>

using HRESULT = SInt32;
using LPVOID = void*;
using REFIID = CFUUIDBytes;
using ULONG = UInt32;

struct IOCFPlugInInterface {
    void* _reserved;
    HRESULT (*QueryInterface)(void* self, REFIID iid, LPVOID* interface);
    ULONG (*AddRef)(void* self);
    ULONG (*Release)(void* self);
    UInt16 version;
    UInt16 revision;
    IOReturn (*Probe)(void* self, CFDictionaryRef properties, io_service_t service, SInt32* order);
    IOReturn (*Start)(void* self, CFDictionaryRef properties, io_service_t service);
    IOReturn (*Stop)(void* self);
};

#define kIOCFPlugInInterfaceID                                                                     \
    CFUUIDGetConstantUUIDWithBytes(nullptr, 0xC2, 0x44, 0xE8, 0x58, 0x10, 0x9C, 0x11, 0xD4, 0x91,  \
                                   0xD4, 0x00, 0x50, 0xE4, 0xC6, 0x42, 0x6F)

extern "C" kern_return_t IOCreatePlugInInterfaceForService(io_service_t service,
                                                           CFUUIDRef pluginType,
                                                           CFUUIDRef interfaceType,
                                                           IOCFPlugInInterface*** interface,
                                                           SInt32* score);
