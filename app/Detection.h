#pragma once

namespace vornadel
{

/// The two notification callbacks, on the main thread. Any USB device triggers the detection.
void DeviceAddedCallback();
void DeviceRemovedCallback();

} // namespace vornadel
