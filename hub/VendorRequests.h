#pragma once

#include "platform/UsbBus.h"

#include <cstddef>
#include <cstdint>

namespace vornadel
{

/// Every request that the tool sends, in the order of kVendorRequests.
enum class VendorCommand : std::size_t {
    OpenTime,
    ReadStatus,
    RestartIntoRom,
    ModeZero,
    RestartIntoFlash,
    EraseFlash,
    WriteFlash,
    ReadFlash,
};

static_assert(HUB_MAKER_VID >= 0 && HUB_MAKER_VID <= 0xFFFF,
              "HUB_MAKER_VID is a USB vendor id of 16 bits");

/// bmRequestType, bRequest, wValue and wIndex. 0x40 is a vendor request to the device, 0xC0 one
/// from it; what is left out is 0. The flash commands carry the address in wValue (bits 0-15) and
/// wIndex (16-31).
inline constexpr ControlRequest kVendorRequests[] = {
    {0x40, 0x02, 0x0001, HUB_MAKER_VID}, // OpenTime
    {0xC0, 0x09},                        // ReadStatus
    {0x40, 0x00},                        // RestartIntoRom
    {0x40, 0x01},                        // ModeZero
    {0x40, 0xE9, 0x0101},                // RestartIntoFlash
    {0x40, 0xE8},                        // EraseFlash
    {0x40, 0xC8},                        // WriteFlash
    {0xC0, 0xD8},                        // ReadFlash
};

constexpr const ControlRequest& vendorRequest(VendorCommand command)
{
    return kVendorRequests[static_cast<std::size_t>(command)];
}

} // namespace vornadel
