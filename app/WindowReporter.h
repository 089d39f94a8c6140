#pragma once

#include "flows/FlowTexts.h"

#include <functional>

namespace vornadel
{

class AppDelegate;

/// Shows one run of a flow in the window, and enables the buttons when the hub is closed. Called on
/// the flow's thread.
class WindowReporter final : public FlowTextReporter
{
public:
    /// `onSuccess` runs on the main thread after the line of a success, before the hub is closed.
    explicit WindowReporter(AppDelegate& delegate, std::function<void()> onSuccess = {});

    void finished(const FlowResult& result) override;
    void closed() override;

private:
    void resetProgressInfo() override;
    void appendProgressInfo_Blue(const std::string& text) override;
    void appendProgressInfo_Red(const std::string& text) override;
    void updateProgressBar(double percent, Wait wait) override;

    AppDelegate& m_delegate;
    std::function<void()> m_onSuccess;
};

} // namespace vornadel
