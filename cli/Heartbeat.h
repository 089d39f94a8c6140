#pragma once

#include "flows/FlowReporter.h"
#include "platform/Clock.h"

#include <memory>

namespace vornadel
{

/// Passes a flow's reports on to another reporter, which it also tells that the flow waits if
/// nothing is reported for a while: a single request can take half a minute. Then waiting() is
/// called four times a second, on the clock's thread, but never while another report is passed on.
/// Nor is it while a flash that has been read is being saved, because the verb may print then.
class Heartbeat final : public FlowReporter
{
public:
    Heartbeat(std::unique_ptr<FlowReporter> shown, Clock& clock);
    ~Heartbeat() override;

    void started(const FlowStart& start) override;
    void stepStarted(Step step) override;
    void progressed(std::int32_t done, std::int32_t total) override;
    void waiting(Clock::Duration sofar) override;
    void finished(const FlowResult& result) override;
    void closed() override;

private:
    struct Heart;
    static void beatLater(const std::shared_ptr<Heart>& heart);
    static void beat(Heart& heart);
    template <typename Report>
    void pass(Report report);

    std::unique_ptr<FlowReporter> m_shown;
    std::shared_ptr<Heart> m_heart;
};

} // namespace vornadel
