#pragma once

#include "app/MainThread.h"
#include "tests/support/Gate.h"
#include "tests/support/VirtualClock.h"

#include <QCoreApplication>
#include <QThread>

#include <optional>

namespace vornadel::test
{

/// A virtual clock whose pauses let the main thread finish its pending work. Otherwise a flow could
/// use up all its attempts, which take no time, while detection has the hub.
class PatientClock : public VirtualClock
{
public:
    void sleep(Duration pause) override
    {
        if (pause == heldPause) {
            gate.pass();
        }
        VirtualClock::sleep(pause);
        if (mainThread != nullptr &&
            QThread::currentThread() != QCoreApplication::instance()->thread()) {
            mainThread->postAndWait([] {});
        }
    }

    void interrupt() override
    {
        VirtualClock::interrupt();
        gate.open();
    }

    MainThread* mainThread = nullptr; ///< set it before a flow starts
    /// A pause of that length lasts until this gate opens or the clock is interrupted.
    std::optional<Duration> heldPause;
    Gate gate;
};

} // namespace vornadel::test
