#pragma once

#include "flows/FlowReporter.h"

#include <string>

namespace vornadel
{

struct FlowTexts;
struct StepTexts;

/// Whether a value of the bar must be on display before the flow goes on.
enum class Wait { Yes, No };

/// Turns a flow's reports into the tool's texts, their colours and the values of the bar. A front
/// end shows these: texts contain their line ends and are on display when the call returns; values
/// appear in the order of the calls. One object for each run.
class FlowTextReporter : public FlowReporter
{
public:
    void started(const FlowStart& start) override;
    void stepStarted(Step step) override;
    void progressed(std::int32_t done, std::int32_t total) final;
    void finished(const FlowResult& result) override;
    void closed() override;

protected:
    virtual void resetProgressInfo() = 0;
    virtual void appendProgressInfo_Blue(const std::string& text) = 0;
    virtual void appendProgressInfo_Red(const std::string& text) = 0;
    virtual void updateProgressBar(double percent, Wait wait) = 0; ///< 0 to 100

private:
    void endStep();

    const FlowTexts* m_flow = nullptr;
    const StepTexts* m_step = nullptr; // the current one
    std::int32_t m_done{};             // bytes of it
    double m_percent{};
};

} // namespace vornadel
