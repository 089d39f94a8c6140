#pragma once

#include "flows/FlowReporter.h"

namespace vornadel
{

class AppDelegate;

/// Shows what a flow tells in the window, from the flow's thread.
class WindowReporter final : public FlowReporter
{
public:
    explicit WindowReporter(AppDelegate& delegate) : m_delegate(delegate) {}

    void resetProgressInfo() override;
    void appendProgressInfo_Blue(const std::string& text) override;
    void appendProgressInfo_Red(const std::string& text) override;
    void updateProgressBar(double percent, Wait wait) override;

private:
    AppDelegate& m_delegate;
};

} // namespace vornadel
