#pragma once

#include <QString>
#include <QStringList>

#include <map>
#include <string>
#include <vector>

namespace vornadel
{

/// What the window remembers of the files that its panels have returned: the images used last, and
/// the folder in which each panel was. It is kept in the user's settings, vornadel/window.ini. If
/// they cannot be read or written, it is remembered until the window closes. Main thread.
class RecentFiles
{
public:
    static constexpr std::size_t kMostImages = 8;

    enum class Panel { Update, Scalar, Load, Save };

    /// Remembers the folder of a file that a panel has returned, and the file itself if it is an
    /// image.
    void add(Panel panel, const std::string& path, bool isImage);

    /// Where a panel should open: where it was last, otherwise the folder of the newest image.
    /// Empty without either.
    std::string folder(Panel panel);
    /// Newest first.
    std::vector<std::string> images();

private:
    void load();
    void store() const;

    // Percent-encoded paths, as in the file.
    QStringList m_images;
    std::map<Panel, QString> m_folders;
};

} // namespace vornadel
