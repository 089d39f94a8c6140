#pragma once

#include "platform/MainBundle.h"

#if defined(__APPLE__)
#include "platform/macos/MacPlatform.h"
#else
#include "platform/linux/LinuxPlatform.h"
#endif

namespace vornadel
{

/// The machine that the program is built for.
#if defined(__APPLE__)
using NativePlatform = MacPlatform;
#else
using NativePlatform = LinuxPlatform;
#endif

/// The bundle of the running program. `argv0` serves where the system does not tell.
MainBundle mainBundle(const char* argv0);

} // namespace vornadel
