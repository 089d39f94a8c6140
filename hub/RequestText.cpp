#include "hub/RequestText.h"

#include "hub/VendorRequests.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

namespace vornadel
{

namespace
{

/// In the order of kVendorRequests.
constexpr const char* kCommandTexts[] = {
    "open-time request",
    "read the status block",
    "restart into ROM code",
    "mode 0",
    "restart into flash code",
    "erase the flash",
    "write",
    "read",
};
static_assert(std::size(kCommandTexts) == std::size(kVendorRequests));

bool movesFlash(VendorCommand command)
{
    return command == VendorCommand::WriteFlash || command == VendorCommand::ReadFlash;
}

} // namespace

std::string Hub_RequestText(const ControlRequest& request)
{
    char text[80];
    const auto* const known = std::find_if(
        std::begin(kVendorRequests), std::end(kVendorRequests), [&](const ControlRequest& each) {
            return each.bmRequestType == request.bmRequestType && each.bRequest == request.bRequest;
        });
    if (known != std::end(kVendorRequests)) {
        const auto i = known - std::begin(kVendorRequests);
        if (!movesFlash(static_cast<VendorCommand>(i))) {
            return kCommandTexts[i];
        }
        std::snprintf(text, sizeof text, "%s %u bytes at 0x%04X", kCommandTexts[i],
                      static_cast<unsigned>(request.wLength()),
                      static_cast<unsigned>(request.wIndex) << 16 | request.wValue);
        return text;
    }
    std::snprintf(text, sizeof text, "request %02X %02X, value %04X, index %04X, %u bytes",
                  static_cast<unsigned>(request.bmRequestType),
                  static_cast<unsigned>(request.bRequest), static_cast<unsigned>(request.wValue),
                  static_cast<unsigned>(request.wIndex), static_cast<unsigned>(request.wLength()));
    return text;
}

} // namespace vornadel
