// The help box: the driver, the reboot that it may need, and copying the log to the desktop.

#include "app/AppDelegate.h"
#include "app/ConsoleLog.h"
#include "app/FileNames.h"
#include "app/GeneralFunction.h"
#include "driver/HubDriver.h"

#include <QApplication>
#include <QEventLoop>
#include <QFile>
#include <QMessageBox>
#include <QPushButton>

#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace vornadel
{

namespace
{

/// Disables the buttons, visibly, because the main thread may be busy from now on.
void switchOff(AppDelegate& tool)
{
    tool.SetButtonStatus(false);
    QApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

/// Drops the presses of the meantime, because the buttons are still disabled, and enables these.
void switchOnAgain(AppDelegate& tool)
{
    QApplication::processEvents();
    tool.SetButtonStatus(true);
}

} // namespace

void AppDelegate::LoadUpdateDriver()
{
    ConsoleLog("Enter LoadUpdateDriver");
    if (!isFitForShell(m_place.resourcePath)) {
        ConsoleLog("the tool's path contains a line break, a tab or another control character, "
                   "which the shell would misread; move the tool to another folder");
        return;
    }
    switchOff(*this);
    const std::string problem = claimDriverCopy(QFile::encodeName(driverCopy).toStdString());
    if (problem.empty()) {
        copyDriverBundle(m_platform.shell, m_place.resourcePath);
    } else {
        ConsoleLog(QFile::decodeName(problem.c_str()) + "; the driver is not copied there");
    }
    runScript("load");
    switchOnAgain(*this);
    RebootOrNot();
}

void AppDelegate::UnloadUpdateDriver()
{
    ConsoleLog("Enter UnloadUpdateDriver");
    switchOff(*this);
    // Before the script starts: a hub in its ROM code must be restarted into its firmware before
    // the access to it is withdrawn.
    std::shared_ptr<HubHold> hold = m_platform.privileged.holdHub();
    runScript("unload");
    if (hold == nullptr) {
        ConsoleLog("access to the hub is being withdrawn; the hub is left as it is");
        switchOnAgain(*this);
        return;
    }
    // The restarts take up to 80 s, and the window is to go on painting.
    const std::function<void()> returnHub = [this, hold = std::move(hold)]() mutable {
        returnHubToFlash();
        hold.reset();
        m_mainThread.postAndWait([this] { switchOnAgain(*this); });
    };
    if (!m_worker.start(returnHub)) {
        returnHub(); // here, because the system has no thread
    }
}

void AppDelegate::RebootOrNot()
{
    if (!_bNeedSignDriver) {
        return; // without reading the snapshot
    }
    // The snapshot was taken before the script ran, and stays as it is until the machine restarts.
    std::string bootArguments;
    if (m_platform.shell.mayRead(QFile::encodeName(bootArgumentsFile).toStdString())) {
        bootArguments = GeneralFunction::GetStringFromFile(bootArgumentsFile).toStdString();
    }
    if (!needsReboot(_bNeedSignDriver, bootArguments)) {
        return;
    }
    QMessageBox prompt(m_window.get());
    prompt.setObjectName("alert");
    prompt.setIcon(QMessageBox::Warning);
    prompt.setTextFormat(Qt::PlainText);
    prompt.setText(
        "Your MacOS is 10.10 or later,some params have been set to your Mac. Now,please reboot to "
        "allow morvane kernel kext\n ");
    // Both have the same role, which keeps their order. Neither is the escape button: a habitual
    // press of that key must not quit the tool.
    QPushButton* cancel = prompt.addButton("Cancel", QMessageBox::ActionRole);
    const QPushButton* rebootNow = prompt.addButton("Reboot Now", QMessageBox::ActionRole);
    prompt.setDefaultButton(cancel);
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
        ConsoleLog(QString("cannot ask for administrator rights here; run \"%1/%2\" as root")
                       .arg(shownName(m_place.resourcePath), QString(name)));
    }
}

void AppDelegate::GetLog()
{
    ConsoleLog("Entering GetLog");
    if (m_platform.shell.exists(kLogFile) && !m_platform.shell.mayRead(kLogFile)) {
        ConsoleLog(
            QString("%1 is not a plain file of your own, so it is not copied").arg(kLogFile));
        return;
    }
    m_platform.shell.run("rm ~/Desktop/Vornadel.log");
    m_platform.shell.run("cp /tmp/Vornadel.log ~/Desktop/");
}

} // namespace vornadel
