#pragma once

#include <cstdio>
#include <cstdlib>

namespace vornadel
{

/// Ends the process from any thread while others run. Flushes what has been printed, and destroys
/// nothing that is still in use.
[[noreturn]] inline void leaveProcess(int status)
{
    std::fflush(nullptr);
    std::_Exit(status);
}

} // namespace vornadel
