#include "cli/Interruption.h"

#include "cli/CommandLine.h"
#include "hub/HubTransport.h"
#include "platform/posix/EndingSignals.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <string>

#include <poll.h>
#include <pthread.h>
#include <unistd.h>

namespace vornadel
{

namespace
{

/// A program such as `timeout`, and a terminal that closes, send one signal twice.
constexpr Clock::Duration kOneSignal = std::chrono::milliseconds(500);

/// Wakes the waiting thread when the program ends by itself.
constexpr int kWakeUp = SIGUSR1;

/// Writes a line to standard error; on a terminal, on a fresh line, because a percentage may stand
/// in this one. Drops it if nobody reads, so that the next signal is not missed.
void say(const char* sentence)
{
    const std::string line =
        (::isatty(STDERR_FILENO) == 1 ? "\n" : "") + std::string(sentence) + '\n';
    pollfd room{STDERR_FILENO, POLLOUT, 0};
    if (::poll(&room, 1, 0) == 1) {
        [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, line.data(), line.size());
    }
}

/// Returns how far the command has come.
StopRequest::Phase askToStop(StopRequest& stop)
{
    using Phase = StopRequest::Phase;
    return stop.ask([](Phase reached) {
        if (reached == Phase::Unchanged) {
            say("stopping; the hub stays as it was");
        } else if (reached == Phase::Changing) {
            say(kFinishing);
        }
    });
}

} // namespace

Interruption::Interruption(Clock& clock, StopRequest& stop)
{
    sigset_t signals = blockEndingSignals();
    sigset_t wakeUp;
    sigemptyset(&wakeUp);
    sigaddset(&wakeUp, kWakeUp);
    pthread_sigmask(SIG_BLOCK, &wakeUp, nullptr);
    sigaddset(&signals, kWakeUp);
    m_thread = std::thread([this, &clock, &stop, signals] { wait(clock, stop, signals); });
}

Interruption::~Interruption()
{
    m_ending = true;
    pthread_kill(m_thread.native_handle(), kWakeUp);
    m_thread.join();
}

int Interruption::statusAfter(int commandStatus) const
{
    return m_signal != 0 && commandStatus != kExitSuccess ? kExitInterrupted + m_signal
                                                          : commandStatus;
}

void Interruption::wait(Clock& clock, StopRequest& stop, const sigset_t& signals)
{
    bool abandoned = false;
    int last = 0;
    Clock::Duration lastCame{};
    while (!m_ending) {
        int signal = 0;
        sigwait(&signals, &signal);
        const Clock::Duration now = clock.now();
        if (signal == kWakeUp || (signal == last && now - lastCame < kOneSignal)) {
            continue;
        }
        last = signal;
        lastCame = now;
        int none = 0;
        const bool first = m_signal.compare_exchange_strong(none, signal);
        using Phase = StopRequest::Phase;
        const Phase phase = first && !abandoned ? askToStop(stop) : Phase::NoFlow;
        if (abandoned || phase == Phase::Asking) {
            std::_Exit(kExitInterrupted + m_signal);
        }
        if (phase != Phase::NoFlow) {
            continue;
        }
        abandoned = true;
        Hub_Abandon();
        clock.interrupt();
    }
}

} // namespace vornadel
