#pragma once

#include <cstdio>
#include <cstdlib>

namespace vornadel
{

/// Ends the process from any thread while others go on: what has been printed is out, and nothing
/// is destroyed that is still in use.
[[noreturn]] inline void leaveProcess(int status)
{
    std::fflush(nullptr);
    std::_Exit(status);
}

} // namespace vornadel
