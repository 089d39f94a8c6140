#include "props/PropertyFiles.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <memory>
#include <string_view>
#include <utility>

namespace vornadel
{

namespace
{

struct CloseFolder {
    void operator()(DIR* folder) const { closedir(folder); }
};
using Folder = std::unique_ptr<DIR, CloseFolder>;

/// A folder on the way down, and the length of its path from the tool directory, including the
/// slash after it.
struct Level {
    Folder folder;
    std::size_t pathLength;
};

/// Each level holds a file descriptor, and a process has few.
constexpr std::size_t kMostLevels = 256;

/// The links that are followed.
constexpr std::string_view kLinksToFolders[] = {"definitions", "local-definitions"};

/// Null for anything but a readable folder. The attempt never opens anything else.
Folder openFolder(int parent, const char* name, int linkFlag)
{
    const int descriptor = openat(parent, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC | linkFlag);
    Folder folder(fdopendir(descriptor));
    if (!folder) {
        close(descriptor); // closing -1 does nothing
    }
    return folder;
}

bool hasTheExtension(std::string_view name)
{
    const std::size_t dot = name.rfind('.');
    return dot != std::string_view::npos && dot != 0 && name.substr(dot + 1) == "INI";
}

} // namespace

std::vector<std::string> findPropertyFiles(const std::string& toolDirectory)
{
    std::vector<std::string> found;
    std::vector<Level> levels;
    if (Folder top = openFolder(AT_FDCWD, toolDirectory.c_str(), 0)) {
        levels.push_back({std::move(top), 0});
    }
    std::string path; // of the innermost folder
    while (!levels.empty()) {
        DIR* const folder = levels.back().folder.get();
        path.resize(levels.back().pathLength);
        const dirent* const entry = readdir(folder);
        if (entry == nullptr) {
            levels.pop_back();
            continue;
        }
        const std::string_view name = entry->d_name;
        if (name == "." || name == "..") {
            continue;
        }
        if (hasTheExtension(name)) {
            found.push_back(path + entry->d_name);
        }
        const bool isOurLink =
            levels.size() == 1 && std::find(std::begin(kLinksToFolders), std::end(kLinksToFolders),
                                            name) != std::end(kLinksToFolders);
        const bool mayBeFolder =
            entry->d_type == DT_DIR || entry->d_type == DT_UNKNOWN || isOurLink;
        if (mayBeFolder && levels.size() < kMostLevels) {
            if (Folder inner =
                    openFolder(dirfd(folder), entry->d_name, isOurLink ? 0 : O_NOFOLLOW)) {
                path.append(name).push_back('/');
                levels.push_back({std::move(inner), path.size()});
            }
        }
    }
    return found;
}

} // namespace vornadel
