#include "app/Manual.h"

#include "app/ConsoleLog.h"

#include <QDesktopServices>
#include <QFileInfo>
#include <QUrl>

namespace vornadel
{

void openManual(const QStringList& folders)
{
    for (const QString& folder : folders) {
        const QString manual = folder + "/README.md";
        if (QFileInfo(manual).isFile()) {
            if (!QDesktopServices::openUrl(QUrl::fromLocalFile(manual))) {
                ConsoleLog("cannot show the manual here; read " + manual);
            }
            return;
        }
    }
    ConsoleLog("there is no manual, README.md, in " + folders.join(" or "));
}

} // namespace vornadel
