#pragma once

#include "flows/FlowReporter.h"

namespace vornadel
{

class EventStream;

/// "erase"
const char* nameOf(Step step);

/// Prints one run of a flow as events.
class JsonReporter final : public FlowReporter
{
public:
    explicit JsonReporter(EventStream& events) : m_events(events) {}

    void started(const FlowStart& /*start*/) override {}
    void stepStarted(Step step) override;
    void progressed(std::int32_t done, std::int32_t total) override;
    void waiting(Clock::Duration sofar) override;
    void finished(const FlowResult& /*result*/) override {} // the command's result tells it
    void closed() override {}

private:
    EventStream& m_events;
    Step m_step = Step::Open;     // the current one
    Clock::Duration m_lastWait{}; // that was told of
};

} // namespace vornadel
