#include "app/Tool.h"

#include "app/AppDelegate.h"
#include "app/LeaveProcess.h"
#include "hub/HubTransport.h"

#include <QApplication>
#include <QIcon>
#include <QImageReader>
#include <QPixmap>
#include <QString>

/// What the desktop knows the program by. In no namespace: the resources have none.
static void introduceProgram()
{
    Q_INIT_RESOURCE(icons); // a library's resources are not there by themselves
    QGuiApplication::setDesktopFileName("org.vornadel.Vornadel");
    QApplication::setApplicationName("Vornadel");
    QIcon icon;
    for (const int size : {16, 32, 48, 64}) {
        QImageReader picture(QString(":/Vornadel-%1.png").arg(size), "png");
        picture.setAutoDetectImageFormat(false); // it loads all plugins for images to ask them
        icon.addPixmap(QPixmap::fromImageReader(&picture));
    }
    QApplication::setWindowIcon(icon);
}

namespace vornadel
{

int runTool(Platform& platform, const ToolPlace& place, const QString& titleSuffix,
            const std::function<void(AppDelegate&)>& launched)
{
    QApplication::setQuitOnLastWindowClosed(
        AppDelegate::applicationShouldTerminateAfterLastWindowClosed());
    introduceProgram();
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
