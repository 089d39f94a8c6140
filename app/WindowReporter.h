#pragma once

#include "flows/FlowTexts.h"
#include "platform/Taskbar.h"

#include <functional>
#include <memory>

namespace vornadel
{

class AppDelegate;

/// Shows one run of a flow in the window and the taskbar, and enables the buttons when the hub is
/// closed. Called on the flow's thread.
class WindowReporter final : public FlowTextReporter
{
public:
    /// `onSuccess` runs on the main thread after the line of a success, before the hub is closed.
    explicit WindowReporter(AppDelegate& delegate, std::function<void()> onSuccess = {});

    void stepStarted(Step step) override;
    void finished(const FlowResult& result) override;
    void closed() override;

private:
    void resetProgressInfo() override;
    void appendProgressInfo_Blue(const std::string& text) override;
    void appendProgressInfo_Red(const std::string& text) override;
    void updateProgressBar(double percent, Wait wait) override;

    AppDelegate& m_delegate;
    std::function<void()> m_onSuccess;
    bool m_hasBegun = false; // the first step; a flow without an image ends before
    std::unique_ptr<TaskbarProgress> m_taskbar;
};

} // namespace vornadel
