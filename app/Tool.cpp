#include "app/Tool.h"

#include "app/AppDelegate.h"
#include "app/LeaveProcess.h"
#include "hub/HubTransport.h"

#include <QApplication>

namespace vornadel
{

int runTool(Platform& platform, const ToolPlace& place, const QString& titleSuffix,
            const std::function<void(AppDelegate&)>& launched)
{
    QApplication::setQuitOnLastWindowClosed(
        AppDelegate::applicationShouldTerminateAfterLastWindowClosed());
    Hub_UsePlatform(platform.usb, platform.clock);

    AppDelegate delegate(platform, place, titleSuffix);
    delegate.applicationDidFinishLaunching();
    if (launched) {
        launched(delegate);
    }
    const int status = QApplication::exec();
    if (!delegate.shutDown()) {
        // The worker is still blocked in a transfer. Nothing may be destroyed while it runs; the
        // system closes the hub.
        leaveProcess(status);
    }
    return status;
}

} // namespace vornadel
