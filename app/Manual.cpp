#include "app/Manual.h"

#include "app/ConsoleLog.h"
#include "app/FileNames.h"

#include <QByteArray>
#include <QDesktopServices>
#include <QStringList>
#include <QUrl>

#include <filesystem>
#include <system_error>

namespace vornadel
{

namespace
{

/// Not fromLocalFile(), which loses what is not UTF-8.
QUrl urlOf(const std::string& path)
{
    return QUrl::fromEncoded("file://" + QByteArray::fromStdString(path).toPercentEncoding("/"));
}

} // namespace

void openManual(const std::vector<std::string>& folders)
{
    QStringList searched;
    for (const std::string& folder : folders) {
        const std::string manual = folder + "/README.md";
        std::error_code ignored;
        if (std::filesystem::is_regular_file(manual, ignored)) {
            if (!QDesktopServices::openUrl(urlOf(manual))) {
                ConsoleLog("cannot show the manual here; read " + shownName(manual));
            }
            return;
        }
        searched.append(shownName(folder));
    }
    ConsoleLog("there is no manual, README.md, in " + searched.join(" or "));
}

} // namespace vornadel
