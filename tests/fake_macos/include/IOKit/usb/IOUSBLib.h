// The user client of a USB device; see CoreFoundation.h. The table has every slot up to the last
// used one, because only its position identifies a slot.

#pragma once

#include <IOKit/IOCFPlugIn.h>
#include <IOKit/IOKitLib.h>

#define kIOUSBPipeStalled (static_cast<IOReturn>(0xE000404F))
#define kIOUSBTransactionTimeout (static_cast<IOReturn>(0xE0004051))

struct IOUSBDevRequest {
    UInt8 bmRequestType;
    UInt8 bRequest;
    UInt16 wValue;
    UInt16 wIndex;
    UInt16 wLength;
    void* pData;
    UInt32 wLenDone;
};

struct IOUSBConfigurationDescriptor;
using IOUSBConfigurationDescriptorPtr = IOUSBConfigurationDescriptor*;
using AbsoluteTime = std::uint64_t;

struct IOUSBDeviceInterface {
    void* _reserved;
    HRESULT (*QueryInterface)(void* self, REFIID iid, LPVOID* interface);
    ULONG (*AddRef)(void* self);
    ULONG (*Release)(void* self);
    IOReturn (*CreateDeviceAsyncEventSource)(void* self, CFRunLoopSourceRef* source);
    CFRunLoopSourceRef (*GetDeviceAsyncEventSource)(void* self);
    IOReturn (*CreateDeviceAsyncPort)(void* self, mach_port_t* port);
    mach_port_t (*GetDeviceAsyncPort)(void* self);
    IOReturn (*USBDeviceOpen)(void* self);
    IOReturn (*USBDeviceClose)(void* self);
    IOReturn (*GetDeviceClass)(void* self, UInt8* value);
    IOReturn (*GetDeviceSubClass)(void* self, UInt8* value);
    IOReturn (*GetDeviceProtocol)(void* self, UInt8* value);
    IOReturn (*GetDeviceVendor)(void* self, UInt16* value);
    IOReturn (*GetDeviceProduct)(void* self, UInt16* value);
    IOReturn (*GetDeviceReleaseNumber)(void* self, UInt16* value);
    IOReturn (*GetDeviceAddress)(void* self, UInt16* value);
    IOReturn (*GetDeviceBusPowerAvailable)(void* self, UInt32* value);
    IOReturn (*GetDeviceSpeed)(void* self, UInt8* value);
    IOReturn (*GetNumberOfConfigurations)(void* self, UInt8* value);
    IOReturn (*GetLocationID)(void* self, UInt32* value);
    IOReturn (*GetConfigurationDescriptorPtr)(void* self, UInt8 index,
                                              IOUSBConfigurationDescriptorPtr* descriptor);
    IOReturn (*GetConfiguration)(void* self, UInt8* value);
    IOReturn (*SetConfiguration)(void* self, UInt8 value);
    IOReturn (*GetBusFrameNumber)(void* self, UInt64* frame, AbsoluteTime* time);
    IOReturn (*ResetDevice)(void* self);
    IOReturn (*DeviceRequest)(void* self, IOUSBDevRequest* request);
};

#define kIOUSBDeviceUserClientTypeID                                                               \
    CFUUIDGetConstantUUIDWithBytes(nullptr, 0x9D, 0xC7, 0xB7, 0x80, 0x9E, 0xC0, 0x11, 0xD4, 0xA5,  \
                                   0x4F, 0x00, 0x0A, 0x27, 0x05, 0x28, 0x61)
#define kIOUSBDeviceInterfaceID                                                                    \
    CFUUIDGetConstantUUIDWithBytes(nullptr, 0x5C, 0x81, 0x87, 0xD0, 0x9E, 0xF3, 0x11, 0xD4, 0x8B,  \
                                   0x45, 0x00, 0x0A, 0x27, 0x05, 0x28, 0x61)
