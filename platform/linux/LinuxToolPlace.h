#pragma once

#include "platform/ToolPlace.h"

namespace vornadel
{

/// The place of the running program, with symbolic links resolved. `argv0` is the fallback where
/// there is no /proc.
ToolPlace linuxToolPlace(const char* argv0);

} // namespace vornadel
