#pragma once

#include <string>

namespace vornadel
{

/// Whether a progress value must be on display before the flow goes on.
enum class Wait { Yes, No };

/// What a flow tells while it works. Called on the flow's own thread; texts carry their own line
/// ends. A text is on display when the call returns; values appear in the order in which they were
/// told.
class FlowReporter
{
public:
    FlowReporter() = default;
    FlowReporter(const FlowReporter&) = delete;
    FlowReporter& operator=(const FlowReporter&) = delete;
    virtual ~FlowReporter() = default;

    virtual void resetProgressInfo() = 0;
    virtual void appendProgressInfo_Blue(const std::string& text) = 0;
    virtual void appendProgressInfo_Red(const std::string& text) = 0;
    virtual void updateProgressBar(double percent, Wait wait) = 0; ///< 0 to 100
};

} // namespace vornadel
