#pragma once

#include <IOKit/IOKitLib.h>

namespace vornadel
{

/// The class of every USB device. Newer systems call it otherwise, and know it by this name all the
/// same.
inline constexpr const char* kUsbDeviceClass = "IOUSBDevice";

/// The port to the system's device registry by its first name, the only one that systems before
/// macOS 12 know.
inline mach_port_t masterPort()
{
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    return kIOMasterPortDefault;
#pragma GCC diagnostic pop
}

} // namespace vornadel
