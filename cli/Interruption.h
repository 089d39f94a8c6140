#pragma once

#include "cli/StopRequest.h"
#include "platform/Clock.h"

#include <atomic>
#include <csignal>
#include <thread>

namespace vornadel
{

/// Turns SIGINT, SIGTERM and SIGHUP into an orderly end. A signal that is ignored already stays
/// ignored.
///
/// The first one asks the flow to stop: it does so before it changes the flash, and otherwise
/// finishes. Standard error says which. The second one, or the first if no flow runs, ends the
/// command at its next request: the request in flight completes, no other follows, waits end at
/// once, and the flow closes the hub. One more ends the process immediately. The same signal twice
/// within half a second is one.
///
/// Create it before any other thread, because threads inherit the signal mask.
class Interruption
{
public:
    Interruption(Clock& clock, StopRequest& stop);
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;
    ~Interruption();

    /// The exit status of the program: 128 plus the first signal for a command that failed after
    /// it. A command that succeeded has succeeded, whenever the signal came.
    int statusAfter(int commandStatus) const;

private:
    void wait(Clock& clock, StopRequest& stop, const sigset_t& signals);

    std::atomic<int> m_signal = 0; // the first
    std::atomic<bool> m_ending = false;
    std::thread m_thread;
};

} // namespace vornadel
