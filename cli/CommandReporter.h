#pragma once

#include "flows/FlowReporter.h"
#include "platform/SleepInhibitor.h"

#include <memory>

namespace vornadel
{

struct Command;

/// Receives the reports of one run of a flow: shows them as the command line asks for, tells the
/// command's StopRequest how far the flow has come, keeps the machine awake, and keeps the result.
class CommandReporter final : public FlowReporter
{
public:
    explicit CommandReporter(const Command& command);

    void started(const FlowStart& start) override;
    void stepStarted(Step step) override;
    void progressed(std::int32_t done, std::int32_t total) override;
    void waiting(Clock::Duration sofar) override;
    void finished(const FlowResult& result) override;
    void closed() override;

    const FlowResult& result() const { return m_result; } ///< after finished()

private:
    const Command& m_command;
    std::unique_ptr<FlowReporter> m_shown;
    std::unique_ptr<SleepHold> m_awake;
    FlowResult m_result;
    bool m_mustFinish = false; // a step has begun after which the flow does not stop
};

} // namespace vornadel
