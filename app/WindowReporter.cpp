#include "app/WindowReporter.h"

#include "app/AppDelegate.h"

#include <utility>

namespace vornadel
{

WindowReporter::WindowReporter(AppDelegate& delegate, std::function<void()> onSuccess)
    : m_delegate(delegate), m_onSuccess(std::move(onSuccess))
{
}

void WindowReporter::stepStarted(Step step)
{
    if (!std::exchange(m_hasBegun, true)) {
        m_taskbar = m_delegate.taskbar().begin();
    }
    FlowTextReporter::stepStarted(step);
}

void WindowReporter::finished(const FlowResult& result)
{
    FlowTextReporter::finished(result);
    if (result.succeeded() && m_onSuccess) {
        m_delegate.mainThread().postAndWait(m_onSuccess);
    }
}

void WindowReporter::closed()
{
    m_taskbar = nullptr;
    m_delegate.mainThread().postAndWait([this] {
        m_delegate.SetButtonStatus(true);
        m_delegate.notice().ended();
        if (m_hasBegun) { // the update at start often has nothing to do
            m_delegate.notice().askForAttention();
        }
    });
    FlowTextReporter::closed();
}

void WindowReporter::resetProgressInfo()
{
    m_delegate.mainThread().postAndWait([this] { m_delegate.resetProgressInfo(); });
}

void WindowReporter::appendProgressInfo_Blue(const std::string& text)
{
    const QString line = QString::fromStdString(text);
    m_delegate.mainThread().postAndWait([this, line] { m_delegate.appendProgressInfo_Blue(line); });
}

void WindowReporter::appendProgressInfo_Red(const std::string& text)
{
    const QString line = QString::fromStdString(text);
    m_delegate.mainThread().postAndWait([this, line] { m_delegate.appendProgressInfo_Red(line); });
}

void WindowReporter::updateProgressBar(double percent, Wait wait)
{
    if (m_taskbar != nullptr) {
        m_taskbar->show(percent / 100);
    }
    AppDelegate& delegate = m_delegate; // a posted value may be shown when this reporter is gone
    const auto show = [&delegate, percent] { delegate.updateProgressBar(percent); };
    if (wait == Wait::Yes) {
        delegate.mainThread().postAndWait(show);
    } else {
        delegate.mainThread().post(show);
    }
}

} // namespace vornadel
