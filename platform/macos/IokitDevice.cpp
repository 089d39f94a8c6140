#include "platform/macos/IokitDevice.h"

#include <string>
#include <vector>

namespace vornadel
{

namespace
{

/// The port path in a location id: the bus in the top byte, below it four bits for each port on the
/// way, from the highest on, up to the first 0. 0x14210000 is "20-2.1".
std::string pathOf(UInt32 location)
{
    std::string path = std::to_string(location >> 24);
    char separator = '-';
    for (UInt32 ports = location << 8; ports >> 28 != 0; ports <<= 4) {
        path += separator + std::to_string(ports >> 28);
        separator = '.';
    }
    return path;
}

} // namespace

IokitDevice::~IokitDevice()
{
    IokitDevice::close();
    (*m_interface)->Release(m_interface);
}

std::uint16_t IokitDevice::vendorId() const
{
    UInt16 id = 0;
    (*m_interface)->GetDeviceVendor(m_interface, &id);
    return id;
}

std::uint16_t IokitDevice::productId() const
{
    UInt16 id = 0;
    (*m_interface)->GetDeviceProduct(m_interface, &id);
    return id;
}

UsbPlace IokitDevice::place() const
{
    UInt32 location = 0;
    UInt16 address = 0;
    if ((*m_interface)->GetLocationID(m_interface, &location) != kIOReturnSuccess ||
        location == 0 ||
        (*m_interface)->GetDeviceAddress(m_interface, &address) != kIOReturnSuccess) {
        return {};
    }
    return {.own = {pathOf(location), address}};
}

UsbTexts IokitDevice::texts() const { return {}; }

std::string IokitDevice::containerId() { return {}; }

std::vector<std::string> IokitDevice::attachedBelow() const { return {}; }

UsbOpenStatus IokitDevice::open()
{
    const IOReturn result = (*m_interface)->USBDeviceOpen(m_interface);
    m_open = result == kIOReturnSuccess;
    switch (result) {
    case kIOReturnSuccess:
        return UsbOpenStatus::Opened;
    case kIOReturnNotPrivileged:
    case kIOReturnNotPermitted:
        return UsbOpenStatus::NoAccess;
    case kIOReturnExclusiveAccess:
    case kIOReturnBusy:
        return UsbOpenStatus::Busy;
    case kIOReturnNoDevice:
    case kIOReturnNotAttached:
        return UsbOpenStatus::Gone;
    default:
        return UsbOpenStatus::Other;
    }
}

std::uint32_t IokitDevice::control(ControlRequest& request)
{
    // IOKit wants a writable buffer in both directions.
    std::vector<std::uint8_t> copyOfOut(request.out.begin(), request.out.end());
    IOUSBDevRequest transfer{};
    transfer.bmRequestType = request.bmRequestType;
    transfer.bRequest = request.bRequest;
    transfer.wValue = request.wValue;
    transfer.wIndex = request.wIndex;
    transfer.wLength = request.wLength();
    transfer.pData = request.fromDevice() ? request.in.data() : copyOfOut.data();
    const IOReturn status = (*m_interface)->DeviceRequest(m_interface, &transfer);
    request.transferred = transfer.wLenDone;
    return static_cast<std::uint32_t>(status);
}

UsbFailure IokitDevice::failureOf(std::uint32_t status) const
{
    switch (static_cast<IOReturn>(status)) {
    case kIOUSBPipeStalled:
        return UsbFailure::Stalled;
    case kIOReturnUnderrun:
        return UsbFailure::Short;
    case kIOReturnNoDevice:
    case kIOReturnNotAttached:
        return UsbFailure::Gone;
    case kIOUSBTransactionTimeout:
    case kIOReturnTimeout:
        return UsbFailure::TimedOut;
    default:
        return UsbFailure::Other;
    }
}

void IokitDevice::close()
{
    if (m_open) {
        (*m_interface)->USBDeviceClose(m_interface);
        m_open = false;
    }
}

} // namespace vornadel
