#pragma once

#include <csignal>

namespace vornadel
{

/// Blocks SIGINT, SIGTERM and SIGHUP, so that a thread can wait for them, and returns them. A
/// signal that is already ignored, such as SIGHUP under nohup, is left out: once blocked, it would
/// be delivered all the same. Call it before any other thread starts, because threads inherit the
/// signal mask.
sigset_t blockEndingSignals();

} // namespace vornadel
