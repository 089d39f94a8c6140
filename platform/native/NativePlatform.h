#pragma once

#include "platform/ToolPlace.h"

#if defined(__APPLE__)
#include "platform/macos/MacPlatform.h"
#else
#include "platform/linux/LinuxPlatform.h"
#endif

namespace vornadel
{

/// The platform that the program is built for.
#if defined(__APPLE__)
using NativePlatform = MacPlatform;
#else
using NativePlatform = LinuxPlatform;
#endif

/// The place of the running program. `argv0` is the fallback if the system does not know.
ToolPlace thisToolsPlace(const char* argv0);

} // namespace vornadel
