#pragma once

#include "platform/Clock.h"

#include <QTimer>

#include <chrono>
#include <deque>
#include <functional>

namespace vornadel
{

/// Leaves the main thread time for the window while devices keep coming and going: after each
/// detection it rests for as long as that took, and no longer than the eye notices. Main thread.
class DetectionPace
{
public:
    explicit DetectionPace(Clock& clock);

    /// Limits a rest to another time than 50 ms; 0: no rest.
    void restAtMost(Clock::Duration rest) { m_longestRest = rest; }

    /// Runs a detection, at once or after the rest, in the order of the calls.
    void run(std::function<void()> detection);

private:
    void runNext();

    Clock& m_clock;
    Clock::Duration m_longestRest = std::chrono::milliseconds(50);
    std::deque<std::function<void()>> m_waiting;
    QTimer m_rest;
};

} // namespace vornadel
