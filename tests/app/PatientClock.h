#pragma once

#include "app/MainThread.h"
#include "tests/support/Gate.h"
#include "tests/support/VirtualClock.h"

#include <QCoreApplication>
#include <QThread>

#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace vornadel::test
{

/// A virtual clock whose pauses let the main thread finish its pending work. Otherwise a flow could
/// use up all its attempts, which take no time, while detection has the hub.
class PatientClock final : public Clock
{
public:
    Duration now() override { return m_clock.now(); }

    void sleep(Duration pause) override
    {
        if (pause == heldPause) {
            gate.pass();
        }
        m_clock.sleep(pause);
        if (mainThread != nullptr &&
            QThread::currentThread() != QCoreApplication::instance()->thread()) {
            mainThread->postAndWait([] {});
        }
    }

    void after(Duration delay, std::function<void()> task) override
    {
        m_clock.after(delay, std::move(task));
    }

    void interrupt() override
    {
        m_clock.interrupt();
        gate.open();
    }

    std::vector<Duration> pauses() { return m_clock.pauses(); }
    void advance(Duration by) { m_clock.advance(by); }
    void forgetPauses() { m_clock.forgetPauses(); }

    MainThread* mainThread = nullptr; ///< set it before a flow starts
    /// A pause of that length lasts until this gate opens or the clock is interrupted.
    std::optional<Duration> heldPause;
    Gate gate;

private:
    VirtualClock m_clock;
};

} // namespace vornadel::test
