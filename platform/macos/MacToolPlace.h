#pragma once

#include "platform/ToolPlace.h"

namespace vornadel
{

/// The place of the running program: the system's main bundle, which outside a bundle is the
/// program's directory. `argv0` is the fallback if the system does not know.
ToolPlace macToolPlace(const char* argv0);

} // namespace vornadel
