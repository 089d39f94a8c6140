#pragma once

#include "platform/UsbBus.h"

#include <string>

namespace vornadel
{

/// A request in words, for a log: "write 4096 bytes at 0x3000". One that is no vendor command is
/// told in its numbers.
std::string Hub_RequestText(const ControlRequest& request);

} // namespace vornadel
