#pragma once

#include "platform/Clock.h"

#include <atomic>
#include <csignal>
#include <thread>

namespace vornadel
{

/// Turns SIGINT, SIGTERM and SIGHUP into an orderly end: the request in flight completes, no other
/// follows, pauses end at once, and the flow closes the hub. A second signal ends the process
/// immediately. A signal that is ignored already stays ignored.
///
/// Create it before any other thread, because threads inherit the signal mask.
class Interruption
{
public:
    explicit Interruption(Clock& clock);
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;
    ~Interruption();

    /// The exit status of the program: kExitInterrupted for a command that failed after a signal.
    /// A command that succeeded has succeeded, whenever the signal came.
    int statusAfter(int commandStatus) const;

private:
    void wait(Clock& clock, const sigset_t& signals);

    std::atomic<bool> m_happened = false;
    std::atomic<bool> m_ending = false;
    std::thread m_thread;
};

} // namespace vornadel
