#pragma once

#include <csignal>

namespace vornadel
{

/// Blocks SIGINT, SIGTERM and SIGHUP, so that a thread can wait for them, and returns them. A
/// signal that is ignored already, SIGHUP under nohup for one, is left out: once blocked, it would
/// be delivered all the same. To be called before any other thread starts, since threads inherit
/// what is blocked.
sigset_t blockEndingSignals();

} // namespace vornadel
