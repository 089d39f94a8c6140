#include "app/WindowReporter.h"

#include "app/AppDelegate.h"

namespace vornadel
{

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
    AppDelegate& delegate = m_delegate; // a posted value may be shown after the flow and this
                                        // reporter have gone
    const auto show = [&delegate, percent] { delegate.updateProgressBar(percent); };
    if (wait == Wait::Yes) {
        delegate.mainThread().postAndWait(show);
    } else {
        delegate.mainThread().post(show);
    }
}

} // namespace vornadel
