#pragma once

#include "platform/MainBundle.h"

namespace vornadel
{

/// The main bundle according to the system; outside a bundle that is the program's directory.
/// `argv0` is the fallback if the system does not know.
MainBundle coreBundle(const char* argv0);

} // namespace vornadel
