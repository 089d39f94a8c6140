#include "app/DetectionPace.h"

#include <algorithm>
#include <utility>

namespace vornadel
{

DetectionPace::DetectionPace(Clock& clock) : m_clock(clock)
{
    m_rest.setSingleShot(true);
    QObject::connect(&m_rest, &QTimer::timeout, &m_rest, [this] { runNext(); });
}

void DetectionPace::run(std::function<void()> detection)
{
    m_waiting.push_back(std::move(detection));
    runNext();
}

void DetectionPace::runNext()
{
    while (!m_waiting.empty() && !m_rest.isActive()) {
        const std::function<void()> detection = std::move(m_waiting.front());
        m_waiting.pop_front();
        const Clock::Duration begin = m_clock.now();
        detection();
        const Clock::Duration took = std::min(m_clock.now() - begin, m_longestRest);
        if (took > Clock::Duration::zero()) {
            m_rest.start(std::chrono::ceil<std::chrono::milliseconds>(took));
        }
    }
}

} // namespace vornadel
