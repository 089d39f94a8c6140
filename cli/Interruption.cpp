#include "cli/Interruption.h"

#include "cli/CommandLine.h"
#include "hub/HubTransport.h"

#include <csignal>
#include <cstdlib>
#include <pthread.h>

namespace vornadel
{

namespace
{

/// Wakes the waiting thread when the program ends by itself.
constexpr int kWakeUp = SIGUSR1;

bool ignored(int signal)
{
    struct sigaction action = {};
    return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

/// What is ignored from the start, as under nohup, stays so: once blocked, it would be delivered
/// all the same.
sigset_t awaitedSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, kWakeUp);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        if (!ignored(signal)) {
            sigaddset(&signals, signal);
        }
    }
    return signals;
}

} // namespace

Interruption::Interruption(Clock& clock)
{
    const sigset_t signals = awaitedSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    m_thread = std::thread([this, &clock] { wait(clock); });
}

Interruption::~Interruption()
{
    m_ending = true;
    pthread_kill(m_thread.native_handle(), kWakeUp);
    m_thread.join();
}

void Interruption::wait(Clock& clock)
{
    const sigset_t signals = awaitedSignals();
    while (!m_ending) {
        int signal = 0;
        sigwait(&signals, &signal);
        if (signal == kWakeUp) {
            continue;
        }
        if (m_happened.exchange(true)) {
            std::_Exit(kExitInterrupted);
        }
        Hub_Abandon();
        clock.interrupt();
    }
}

} // namespace vornadel
