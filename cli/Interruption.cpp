#include "cli/Interruption.h"

#include "cli/CommandLine.h"
#include "hub/HubTransport.h"
#include "platform/posix/EndingSignals.h"

#include <csignal>
#include <cstdlib>
#include <pthread.h>

namespace vornadel
{

namespace
{

/// Wakes the waiting thread when the program ends by itself.
constexpr int kWakeUp = SIGUSR1;

} // namespace

Interruption::Interruption(Clock& clock)
{
    sigset_t signals = blockEndingSignals();
    sigset_t wakeUp;
    sigemptyset(&wakeUp);
    sigaddset(&wakeUp, kWakeUp);
    pthread_sigmask(SIG_BLOCK, &wakeUp, nullptr);
    sigaddset(&signals, kWakeUp);
    m_thread = std::thread([this, &clock, signals] { wait(clock, signals); });
}

Interruption::~Interruption()
{
    m_ending = true;
    pthread_kill(m_thread.native_handle(), kWakeUp);
    m_thread.join();
}

int Interruption::statusAfter(int commandStatus) const
{
    return m_happened && commandStatus != kExitSuccess ? kExitInterrupted : commandStatus;
}

void Interruption::wait(Clock& clock, const sigset_t& signals)
{
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
