// The progress text, the progress bar, the alert and the log file's way to the desktop.

#include "app/AppDelegate.h"
#include "app/ConsoleLog.h"
#include "app/Controls.h"
#include "app/GeneralFunction.h"

namespace vornadel
{

void AppDelegate::resetProgressInfo() { nstfUpdateInfo_UpdateFW->clear(); }

void AppDelegate::appendProgressInfo_Blue(const QString& text)
{
    nstfUpdateInfo_UpdateFW->append(text);
    nstfUpdateInfo_UpdateFW->setTone(Tone::Blue);
}

void AppDelegate::appendProgressInfo_Red(const QString& text)
{
    nstfUpdateInfo_UpdateFW->append(text);
    nstfUpdateInfo_UpdateFW->setTone(Tone::Red);
}

void AppDelegate::updateProgressBar(double percent) { slider->setDoubleValue(percent); }

void AppDelegate::showAlert(const QString& message) { GeneralFunction::AlertString(message); }

void AppDelegate::GetLog()
{
    ConsoleLog("Entering GetLog");
    m_platform.shell.run("rm ~/Desktop/Vornadel.log");
    m_platform.shell.run("cp /tmp/Vornadel.log ~/Desktop/");
}

} // namespace vornadel
