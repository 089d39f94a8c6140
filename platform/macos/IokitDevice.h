#pragma once

#include "platform/UsbBus.h"

#include <IOKit/usb/IOUSBLib.h>

namespace vornadel
{

/// A device through its device interface. The open is an ordinary one: it fails while another
/// program has the device, and does not take it from a kernel driver.
///
/// A place has one port only, because the system does not tell which two ports are one connector.
/// Texts, Container ID and what hangs below are not told.
///
/// control() returns the system's status unchanged and uses its time-out. The system also counts a
/// transfer as good if the device sent less than requested; `transferred` shows how much.
class IokitDevice final : public UsbDevice
{
public:
    /// Takes over the caller's reference on `interface`.
    explicit IokitDevice(IOUSBDeviceInterface** interface) : m_interface(interface) {}
    ~IokitDevice() override;

    std::uint16_t vendorId() const override;
    std::uint16_t productId() const override;
    UsbPlace place() const override;
    UsbTexts texts() const override;
    std::string containerId() override;
    std::vector<std::string> attachedBelow() const override;
    UsbOpenStatus open() override;
    std::uint32_t control(ControlRequest& request) override;
    UsbFailure failureOf(std::uint32_t status) const override;
    void close() override;

private:
    IOUSBDeviceInterface** m_interface;
    bool m_open = false;
};

} // namespace vornadel
