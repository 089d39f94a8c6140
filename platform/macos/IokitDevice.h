#pragma once

#include "platform/UsbBus.h"

#include <IOKit/usb/IOUSBLib.h>

namespace vornadel
{

/// A device by way of its device interface. An ordinary open: it fails while another program has
/// the device, and takes nothing from a kernel driver.
///
/// The status of control() is the system's own, unchanged, and so is its time-out. The system also
/// calls a transfer good in which the device sent less than it was asked for; `transferred` tells.
class IokitDevice final : public UsbDevice
{
public:
    /// Takes over the caller's reference on `interface`.
    explicit IokitDevice(IOUSBDeviceInterface** interface) : m_interface(interface) {}
    ~IokitDevice() override;

    std::uint16_t vendorId() const override;
    std::uint16_t productId() const override;
    UsbOpenStatus open() override;
    std::uint32_t control(ControlRequest& request) override;
    void close() override;

private:
    IOUSBDeviceInterface** m_interface;
    bool m_open = false;
};

} // namespace vornadel
