// The help box: the driver, the reboot that it may need, and the log file's way to the desktop.

#include "app/AppDelegate.h"
#include "app/ConsoleLog.h"
#include "app/GeneralFunction.h"
#include "driver/HubDriver.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>

namespace vornadel
{

void AppDelegate::LoadUpdateDriver()
{
    ConsoleLog("Enter LoadUpdateDriver");
    SetButtonStatus(false);
    copyDriverBundle(m_platform.shell, m_place.resourcePath);
    runScript("load");
    SetButtonStatus(true);
    RebootOrNot();
}

void AppDelegate::UnloadUpdateDriver()
{
    ConsoleLog("Enter UnloadUpdateDriver");
    SetButtonStatus(false);
    runScript("unload");
    returnHubToFlash();
    SetButtonStatus(true);
}

void AppDelegate::RebootOrNot()
{
    // The snapshot is of the time before the script, and stays that until the machine has been started again.
    const std::string bootArguments = GeneralFunction::GetStringFromFile(bootArgumentsFile).toStdString();
    if (!needsReboot(_bNeedSignDriver, bootArguments)) {
        return;
    }
    QMessageBox prompt(m_window.get());
    prompt.setObjectName("alert");
    prompt.setIcon(QMessageBox::Warning);
    prompt.setTextFormat(Qt::PlainText);
    prompt.setText("Your MacOS is 10.10 or later,some params have been set to your Mac. Now,please reboot to "
                   "allow morvane kernel kext\n ");
    // Of one role, so that no style changes their order and the Escape key, a habit, quits nothing.
    const QPushButton* cancel = prompt.addButton("Cancel", QMessageBox::AcceptRole);
    const QPushButton* rebootNow = prompt.addButton("Reboot Now", QMessageBox::AcceptRole);
    prompt.exec();
    if (prompt.clickedButton() == rebootNow) {
        Reboot();
    } else if (prompt.clickedButton() == cancel) {
        ConsoleLog("User abort start !!!");
        QApplication::quit();
    }
}

void AppDelegate::Reboot() { runScript("reboot"); }

void AppDelegate::runScript(const char* name)
{
    if (!startScript(m_platform.privileged, m_place.resourcePath, name)) {
        ConsoleLog(QString("there is no way to ask for administrator rights here; run %1/%2 as root")
                       .arg(resourcePath, QString(name)));
    }
}

void AppDelegate::GetLog()
{
    ConsoleLog("Entering GetLog");
    m_platform.shell.run("rm ~/Desktop/Vornadel.log");
    m_platform.shell.run("cp /tmp/Vornadel.log ~/Desktop/");
}

} // namespace vornadel
