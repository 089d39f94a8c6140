#include "app/Tool.h"

#include "app/AppDelegate.h"
#include "config/ToolPlace.h"
#include "hub/HubTransport.h"

#include <QApplication>

#include <cstdio>
#include <cstdlib>

namespace vornadel
{

int runTool(Platform& platform, const char* argv0, const QString& titleSuffix,
            const std::function<void(AppDelegate&)>& launched)
{
    QApplication::setQuitOnLastWindowClosed(AppDelegate::applicationShouldTerminateAfterLastWindowClosed());
    Hub_UsePlatform(platform.usb, platform.clock);

    AppDelegate delegate(platform, toolPlace(argv0), titleSuffix);
    delegate.applicationDidFinishLaunching();
    if (launched) {
        launched(delegate);
    }
    const int status = QApplication::exec();
    if (!delegate.shutDown()) {
        // A transfer still holds the worker. Nothing may be destroyed under it, and the system closes the hub.
        std::fflush(nullptr);
        std::_Exit(status);
    }
    return status;
}

} // namespace vornadel
