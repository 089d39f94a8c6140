#pragma once

#include "platform/UsbBus.h"

#include <memory>

namespace vornadel
{

/// The next supported device of a search, or null at its end. Sets LastError to 3 or 4 for a device
/// on the way that gave no access.
std::unique_ptr<UsbDevice> nextSupportedDevice(UsbSearch& search);

} // namespace vornadel
