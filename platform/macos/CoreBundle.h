#pragma once

#include "platform/MainBundle.h"

namespace vornadel
{

/// The main bundle as the system tells it; outside a bundle that is the program's directory.
/// `argv0` serves where the system does not tell.
MainBundle coreBundle(const char* argv0);

} // namespace vornadel
