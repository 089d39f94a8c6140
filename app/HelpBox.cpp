// The help box: the log file's way to the desktop.

#include "app/AppDelegate.h"
#include "app/ConsoleLog.h"

namespace vornadel
{

void AppDelegate::GetLog()
{
    ConsoleLog("Entering GetLog");
    m_platform.shell.run("rm ~/Desktop/Vornadel.log");
    m_platform.shell.run("cp /tmp/Vornadel.log ~/Desktop/");
}

} // namespace vornadel
