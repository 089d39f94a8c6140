#pragma once

#include "tests/fake_macos/MacState.h"

#include <IOKit/IOCFPlugIn.h>

#include <memory>

namespace vornadel::test
{

/// The user-client plug-in of a device, with one reference. The mutex must be held.
IOCFPlugInInterface** makePlugIn(const std::shared_ptr<MacState>& state,
                                 const DevicePointer& device);

} // namespace vornadel::test
