#pragma once

#include "platform/UsbBus.h"
#include "platform/linux/LibusbContext.h"
#include "platform/linux/SysfsDevice.h"

#include <chrono>
#include <memory>
#include <optional>

struct libusb_device_handle;

namespace vornadel
{

/// A device of libusb's list. An open locks its node below /dev/bus/usb (flock), because the kernel
/// lets any number of programs open a device. For a hub, the node of its half at the other speed is
/// locked too. No interface is claimed and no kernel driver detached: vendor requests to the device
/// need neither, and without the hub driver everything behind the hub would drop off the bus.
class LibusbDevice final : public UsbDevice
{
public:
    /// A control() status of this back end: the data stage was shorter than wLength. Every other
    /// status is a (negative) libusb error code as 32 bits: LIBUSB_ERROR_PIPE, a stall, is
    /// 0xFFFFFFF7.
    static constexpr std::uint32_t kShortTransfer = 1;

    /// Takes its own reference on `device`. `timeout` limits a control transfer without a limit
    /// of its own; 0 means no limit.
    LibusbDevice(std::shared_ptr<LibusbContext> context, libusb_device* device,
                 std::chrono::milliseconds timeout);
    ~LibusbDevice() override;

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
    /// None if this device has left its port, even if another one is there now.
    std::optional<SysfsDevice> attached() const;

    std::shared_ptr<LibusbContext> m_context;
    libusb_device* m_device;
    libusb_device_handle* m_handle = nullptr;
    int m_node = -1;      // the open node, which carries the lock
    int m_otherNode = -1; // that of the same hub's other half, locked as well
    std::chrono::milliseconds m_timeout;
};

} // namespace vornadel
