#include "platform/posix/EndingSignals.h"

#include <initializer_list>
#include <pthread.h>

namespace vornadel
{

sigset_t blockEndingSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction action = {};
        if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler != SIG_IGN) {
            sigaddset(&signals, signal);
        }
    }
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return signals;
}

} // namespace vornadel
