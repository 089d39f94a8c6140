#pragma once

#include "platform/UsbBus.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace vornadel
{

/// What the kernel tells of a USB device below /sys/bus/usb/devices, to everybody and without an
/// open. Each call reads anew; a device that is not there has empty texts and zeros.
class SysfsDevice
{
public:
    /// `name` is that of the device's folder: its port path, such as "2-1.4", or "usb2" for a root
    /// hub.
    explicit SysfsDevice(std::string name);

    const std::string& name() const { return m_name; }
    unsigned bus() const;
    unsigned address() const; ///< another number for each stay of a device at this port
    unsigned vendor() const;
    bool isHub() const;

    /// The other port of the same connector, whether devices are at the two ports or not. The path
    /// is empty if the kernel does not know of one. A device of another vendor there does not
    /// count.
    UsbPort otherPort() const;

    UsbTexts texts() const;
    /// As UsbDevice::containerId(). Empty on older kernels, which do not keep the descriptor.
    std::string containerId() const;
    /// As UsbDevice::attachedBelow(), but only of this half of a hub.
    std::vector<std::string> attachedBelow() const;

private:
    std::string m_name;
    std::string m_folder;
};

/// The Container ID in a BOS descriptor, as UsbDevice::containerId() tells it; empty if it has
/// none.
std::string containerIdIn(std::span<const std::uint8_t> bosDescriptor);

} // namespace vornadel
