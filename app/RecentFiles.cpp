#include "app/RecentFiles.h"

#include <QByteArray>
#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>

#include <limits.h>

namespace vornadel
{

namespace
{

/// A longer settings file is not ours.
constexpr qint64 kLongestSettings = 65536;
/// A lock is held for milliseconds.
constexpr qint64 kOldLockSeconds = 10;

constexpr const char* kImagesKey = "RecentImages/Paths";

struct FolderKey {
    RecentFiles::Panel panel;
    const char* key;
};
constexpr FolderKey kFolderKeys[] = {
    {RecentFiles::Panel::Update, "Folders/Update"},
    {RecentFiles::Panel::Scalar, "Folders/Scalar"},
    {RecentFiles::Panel::Load, "Folders/Load"},
    {RecentFiles::Panel::Save, "Folders/Save"},
};

QString settingsFile()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           "/vornadel/window.ini";
}

/// Opening a pipe would block.
bool mayReadSettings(const QString& path)
{
    const QFileInfo file(path);
    return file.isFile() && file.size() <= kLongestSettings;
}

/// QSettings waits for its lock file without a limit. One that a crash has left is removed; any
/// other means that nothing is written this time.
bool mayWriteSettings(const QString& path)
{
    const QFileInfo lock(path + ".lock");
    const QFileInfo file(path);
    if (file.exists() && !mayReadSettings(path)) {
        return false;
    }
    if (!lock.exists() && !lock.isSymLink()) {
        return true;
    }
    return lock.isFile() &&
           lock.lastModified().secsTo(QDateTime::currentDateTime()) > kOldLockSeconds &&
           QFile::remove(lock.filePath());
}

QString storedPath(const std::string& path)
{
    return QString::fromLatin1(QByteArray::fromStdString(path).toPercentEncoding("/"));
}

/// Empty for what is no absolute path.
std::string pathFromStored(const QString& stored)
{
    std::string path = QByteArray::fromPercentEncoding(stored.toLatin1()).toStdString();
    const bool good =
        path.starts_with('/') && path.size() < PATH_MAX && path.find('\0') == std::string::npos;
    return good ? path : std::string();
}

} // namespace

void RecentFiles::add(Panel panel, const std::string& path, bool isImage)
{
    load();
    m_folders[panel] = storedPath(path.substr(0, path.rfind('/') + 1));
    if (isImage) {
        m_images.removeAll(storedPath(path));
        m_images.prepend(storedPath(path));
        m_images = m_images.mid(0, kMostImages);
    }
    store();
}

std::string RecentFiles::folder(Panel panel)
{
    load();
    std::string folder = pathFromStored(m_folders[panel]);
    if (folder.empty() && !m_images.isEmpty()) {
        const std::string newest = images().front();
        folder = newest.substr(0, newest.rfind('/') + 1);
    }
    return folder;
}

std::vector<std::string> RecentFiles::images()
{
    load();
    std::vector<std::string> paths;
    for (const QString& image : m_images) {
        paths.push_back(pathFromStored(image));
    }
    return paths;
}

void RecentFiles::load()
{
    const QString path = settingsFile();
    if (!mayReadSettings(path)) {
        return;
    }
    const QSettings settings(path, QSettings::IniFormat);
    QStringList images;
    for (const QString& image : settings.value(kImagesKey).toStringList()) {
        if (!pathFromStored(image).empty() && !images.contains(image)) {
            images.append(image);
        }
    }
    m_images = images.mid(0, kMostImages);
    for (const FolderKey& row : kFolderKeys) {
        m_folders[row.panel] = settings.value(row.key).toString();
    }
}

void RecentFiles::store() const
{
    const QString path = settingsFile();
    if (!mayWriteSettings(path)) {
        return;
    }
    QSettings settings(path, QSettings::IniFormat);
    settings.setValue(kImagesKey, m_images);
    for (const FolderKey& row : kFolderKeys) {
        if (const auto found = m_folders.find(row.panel);
            found != m_folders.end() && !found->second.isEmpty()) {
            settings.setValue(row.key, found->second);
        }
    }
}

} // namespace vornadel
