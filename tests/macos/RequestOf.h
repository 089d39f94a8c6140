#pragma once

#include "platform/UsbBus.h"

#include <IOKit/usb/IOUSBLib.h>

namespace vornadel::test
{

/// The transfer as the other back ends are asked for it.
inline ControlRequest requestOf(const IOUSBDevRequest& transfer)
{
    ControlRequest request{transfer.bmRequestType, transfer.bRequest, transfer.wValue,
                           transfer.wIndex};
    auto* const data = static_cast<std::uint8_t*>(transfer.pData);
    if (request.fromDevice()) {
        request.in = {data, transfer.wLength};
    } else {
        request.out = {data, transfer.wLength};
    }
    return request;
}

} // namespace vornadel::test
