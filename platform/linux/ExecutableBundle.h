#pragma once

#include "platform/MainBundle.h"

namespace vornadel
{

/// The bundle around the running program, symbolic links resolved. `argv0` serves where /proc is
/// not there to tell.
MainBundle executableBundle(const char* argv0);

} // namespace vornadel
