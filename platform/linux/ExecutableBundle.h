#pragma once

#include "platform/MainBundle.h"

namespace vornadel
{

/// The bundle around the running program, with symbolic links resolved. `argv0` is the fallback
/// where there is no /proc.
MainBundle executableBundle(const char* argv0);

} // namespace vornadel
