#pragma once

#include "platform/UsbBus.h"

namespace vornadel
{

/// The two notification callbacks, on the main thread. The reference is not used; the services are
/// taken and not looked at: any USB device, hub or not, has the detection run.
void DeviceAddedCallback(void* reference, UsbServices& services);
void DeviceRemovedCallback(void* reference, UsbServices& services);

} // namespace vornadel
