#pragma once

#include <array>
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

/// The fixed half of a setup packet. The flash commands put the address in wValue (bits 0-15) and
/// wIndex (16-31).
struct VendorRequest {
    std::uint8_t bmRequestType; ///< 0x40: to the device, 0xC0: from it; vendor request, recipient
                                ///< device
    std::uint8_t bRequest;
    std::uint16_t wValue;
    std::uint16_t wIndex;
};

static_assert(HUB_MAKER_VID >= 0 && HUB_MAKER_VID <= 0xFFFF,
              "HUB_MAKER_VID is a USB vendor id of 16 bits");

inline constexpr std::array<VendorRequest, 8> kVendorRequests{{
    {0x40, 0x02, 0x0001, HUB_MAKER_VID}, // OpenTime
    {0xC0, 0x09, 0, 0},                  // ReadStatus
    {0x40, 0x00, 0, 0},                  // RestartIntoRom
    {0x40, 0x01, 0, 0},                  // ModeZero
    {0x40, 0xE9, 0x0101, 0},             // RestartIntoFlash
    {0x40, 0xE8, 0, 0},                  // EraseFlash
    {0x40, 0xC8, 0, 0},                  // WriteFlash
    {0xC0, 0xD8, 0, 0},                  // ReadFlash
}};

constexpr const VendorRequest& vendorRequest(VendorCommand command)
{
    return kVendorRequests[static_cast<std::size_t>(command)];
}

} // namespace vornadel
