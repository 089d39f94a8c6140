#include "app/RawNameMenu.h"

#include "app/FileNames.h"

#include <QMenu>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <system_error>
#include <vector>

namespace vornadel
{

namespace
{

enum class Names { Raw, All };

/// A longer menu is of no use.
constexpr qsizetype kMostRawNames = 200;

std::vector<std::filesystem::path> entriesOf(const std::string& folder, Names names)
{
    std::vector<std::filesystem::path> entries;
    std::error_code ended;
    for (std::filesystem::directory_iterator at(folder, ended), end;
         !ended && at != end && std::ssize(entries) < kMostRawNames; at.increment(ended)) {
        if (names == Names::All || !isUtf8(at->path().filename().string())) {
            entries.push_back(at->path());
        }
    }
    std::sort(entries.begin(), entries.end());
    return entries;
}

void fill(QMenu& menu, const std::string& folder, Names names,
          const std::function<void(const std::string&)>& chosen)
{
    menu.clear();
    for (const std::filesystem::path& entry : entriesOf(folder, names)) {
        const std::string path = entry.string();
        const QString label = shownName(entry.filename().string()).replace("&", "&&");
        std::error_code ignored;
        if (std::filesystem::is_directory(entry, ignored)) {
            QMenu* const inner = menu.addMenu(label + '/');
            QObject::connect(inner, &QMenu::aboutToShow, inner,
                             [inner, path, chosen] { fill(*inner, path, Names::All, chosen); });
        } else {
            QObject::connect(menu.addAction(label), &QAction::triggered, &menu,
                             [path, chosen] { chosen(path); });
        }
    }
    if (menu.actions().size() == kMostRawNames) {
        menu.addAction("There may be more")->setEnabled(false);
    }
}

} // namespace

void fillRawNameMenu(QMenu& menu, const std::string& folder,
                     const std::function<void(const std::string&)>& chosen)
{
    fill(menu, folder, Names::Raw, chosen);
}

} // namespace vornadel
