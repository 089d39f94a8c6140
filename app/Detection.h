#pragma once

#include "platform/UsbBus.h"

namespace vornadel
{

/// The two notification callbacks, on the main thread. The reference is not used. The services are
/// read to their end but not examined: any USB device, hub or not, triggers detection.
void DeviceAddedCallback(void* reference, UsbServices& services);
void DeviceRemovedCallback(void* reference, UsbServices& services);

} // namespace vornadel
