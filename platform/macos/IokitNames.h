#pragma once

#include <IOKit/IOKitLib.h>

namespace vornadel
{

/// The class of every USB device. Newer systems use another name, but still accept this one.
inline constexpr const char* kUsbDeviceClass = "IOUSBDevice";

/// The port to the system's device registry, under its old name, the only one before macOS 12.
inline mach_port_t masterPort()
{
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    return kIOMasterPortDefault;
#pragma GCC diagnostic pop
}

} // namespace vornadel
