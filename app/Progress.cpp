// The progress text, the progress bar and the alert.

#include "app/AppDelegate.h"
#include "app/Controls.h"
#include "app/GeneralFunction.h"

namespace vornadel
{

void AppDelegate::resetProgressInfo()
{
    nstfUpdateInfo_UpdateFW->clear();
    m_notice.clear();
}

void AppDelegate::appendProgressInfo_Blue(const QString& text)
{
    nstfUpdateInfo_UpdateFW->append(text);
    nstfUpdateInfo_UpdateFW->setTone(Tone::Blue);
    m_notice.said(text, Tone::Blue);
}

void AppDelegate::appendProgressInfo_Red(const QString& text)
{
    nstfUpdateInfo_UpdateFW->append(text);
    nstfUpdateInfo_UpdateFW->setTone(Tone::Red);
    m_notice.said(text, Tone::Red);
}

void AppDelegate::updateProgressBar(double percent) { slider->setDoubleValue(percent); }

void AppDelegate::showAlert(const QString& message) { GeneralFunction::AlertString(message); }

} // namespace vornadel
