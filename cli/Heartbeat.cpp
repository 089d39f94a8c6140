#include "cli/Heartbeat.h"

#include <chrono>
#include <mutex>
#include <system_error>
#include <utility>

namespace vornadel
{

namespace
{

using namespace std::chrono_literals;

constexpr Clock::Duration kBeat = 250ms;
constexpr Clock::Duration kQuiet = 2s; // longer than a flow that waits lets pass between two
                                       // reports

} // namespace

/// What a beat needs; it may come when the flow is over.
struct Heartbeat::Heart {
    explicit Heart(Clock& beatsOn) : clock(beatsOn) {}

    Clock& clock;
    std::mutex mutex; // held during every report
    FlowReporter* shown = nullptr;
    Step step = Step::Open;
    bool rests = true;
    Clock::Duration lastReport{};
};

Heartbeat::Heartbeat(std::unique_ptr<FlowReporter> shown, Clock& clock)
    : m_shown(std::move(shown)), m_heart(std::make_shared<Heart>(clock))
{
    m_heart->shown = m_shown.get();
}

Heartbeat::~Heartbeat()
{
    const std::lock_guard lock(m_heart->mutex);
    m_heart->shown = nullptr;
}

void Heartbeat::started(const FlowStart& start)
{
    pass([&] { m_shown->started(start); });
    try {
        beatLater(m_heart);
    } catch (const std::system_error&) { // no thread is left: then it is only less talkative
    }
}

void Heartbeat::stepStarted(Step step)
{
    pass([&] {
        m_heart->step = step;
        m_shown->stepStarted(step);
    });
}

void Heartbeat::progressed(std::int32_t done, std::int32_t total)
{
    pass([&] {
        m_shown->progressed(done, total);
        m_heart->rests = m_heart->step == Step::Save && done == total;
    });
}

void Heartbeat::waiting(Clock::Duration sofar)
{
    pass([&] { m_shown->waiting(sofar); });
}

void Heartbeat::finished(const FlowResult& result)
{
    pass([&] {
        m_shown->finished(result);
        m_heart->rests = true;
    });
}

void Heartbeat::closed()
{
    pass([&] {
        m_shown->closed();
        m_heart->rests = true;
    });
}

template <typename Report>
void Heartbeat::pass(Report report)
{
    const std::lock_guard lock(m_heart->mutex);
    m_heart->rests = false;
    report();
    m_heart->lastReport = m_heart->clock.now();
}

void Heartbeat::beatLater(const std::shared_ptr<Heart>& heart)
{
    heart->clock.after(kBeat, [weak = std::weak_ptr(heart)] {
        if (const std::shared_ptr<Heart> alive = weak.lock()) {
            beat(*alive);
            beatLater(alive);
        }
    });
}

void Heartbeat::beat(Heart& heart)
{
    const std::lock_guard lock(heart.mutex);
    const Clock::Duration quiet = heart.clock.now() - heart.lastReport;
    if (heart.shown != nullptr && !heart.rests && quiet >= kQuiet) {
        heart.shown->waiting(quiet);
    }
}

} // namespace vornadel
