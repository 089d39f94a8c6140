#include "platform/posix/LockFiles.h"

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <list>
#include <mutex>
#include <optional>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace vornadel
{

namespace
{

constexpr std::string_view kPrefix = "vornadel-";
constexpr std::string_view kSuffix = ".lock";
// Never follows a link, never waits for the other end of a pipe.
constexpr int kCarefully = O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;

/// Whether every user may create files in the folder, and only their owners may remove them.
bool isShared(const std::string& folder)
{
    constexpr mode_t kSharedMode = S_ISVTX | S_IWOTH;
    struct stat status = {};
    return lstat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
           (status.st_uid == 0 || status.st_uid == geteuid()) &&
           (status.st_mode & kSharedMode) == kSharedMode;
}

/// Whether a text can be a place, and so a part of a file name.
bool isPlace(std::string_view text)
{
    constexpr std::string_view kAllowed = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                          "abcdefghijklmnopqrstuvwxyz.-/";
    return !text.empty() && text.find_first_not_of(kAllowed) == std::string_view::npos &&
           std::count(text.begin(), text.end(), '/') <= 1;
}

std::string fileNameOf(std::string place)
{
    std::replace(place.begin(), place.end(), '/', '_');
    return std::string(kPrefix) + place + std::string(kSuffix);
}

/// The place whose lock has this file name; empty if it is another file.
std::string placeOf(std::string_view fileName)
{
    if (fileName.size() < kPrefix.size() + kSuffix.size() || !fileName.starts_with(kPrefix) ||
        !fileName.ends_with(kSuffix)) {
        return {};
    }
    fileName.remove_prefix(kPrefix.size());
    fileName.remove_suffix(kSuffix.size());
    std::string place(fileName);
    std::replace(place.begin(), place.end(), '_', '/');
    return isPlace(place) ? place : std::string();
}

/// Opens the file, or creates it for all users; -1 if neither is possible.
int openOrCreate(const std::string& path)
{
    // The kernel may refuse O_CREAT for another user's file in a shared folder, so only a file that
    // is not there is created. Another process may create it between the two calls.
    for (int attempt = 0; attempt < 2; ++attempt) {
        int file = ::open(path.c_str(), O_RDWR | kCarefully);
        if (file >= 0 || errno != ENOENT) {
            return file;
        }
        file = ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | kCarefully, 0666);
        if (file >= 0) {
            fchmod(file, 0666); // whatever the umask
            return file;
        }
    }
    return -1;
}

/// The lock of a place: the bytes from 0 on. Their number tells the ids of the device there, so
/// nothing need be written into the file.
struct flock lockOf(UsbIds ids)
{
    struct flock range = {};
    range.l_type = F_WRLCK;
    range.l_whence = SEEK_SET;
    range.l_len = 1 + (off_t{ids.vendor} << 16 | ids.product);
    return range;
}

/// Zero for a lock to the end of the file, which is none of ours.
UsbIds idsOf(const struct flock& lock)
{
    const off_t number = lock.l_len == 0 ? 0 : lock.l_len - 1;
    return {static_cast<std::uint16_t>(number >> 16), static_cast<std::uint16_t>(number)};
}

/// Who has locked the file; none if nobody has. The process is 0 if the system does not tell it.
std::optional<PlaceOwner> ownerOf(int file, const std::string& place)
{
    struct flock range = lockOf({});
    if (fcntl(file, F_GETLK, &range) != 0 || range.l_type == F_UNLCK) {
        return std::nullopt;
    }
    return PlaceOwner{place, std::max<std::int64_t>(range.l_pid, 0), idsOf(range)};
}

/// A place that this process has locked.
struct Held {
    std::string path;
    dev_t device;
    ino_t inode;
    std::vector<int> files; // the first one has the lock
};

/// All places that this process has locked, since locks of files do not keep its own threads apart.
struct HeldPlaces {
    std::mutex mutex; // guards what follows
    std::list<Held> places;

    bool has(const std::string& path) const
    {
        return std::any_of(places.begin(), places.end(),
                           [&](const Held& held) { return held.path == path; });
    }

    /// The place that is locked by means of this file, perhaps under another name; null if none.
    Held* find(const struct stat& status)
    {
        const auto found = std::find_if(places.begin(), places.end(), [&](const Held& held) {
            return held.device == status.st_dev && held.inode == status.st_ino;
        });
        return found == places.end() ? nullptr : &*found;
    }
};

const std::shared_ptr<HeldPlaces>& heldPlaces()
{
    static const auto held = std::make_shared<HeldPlaces>();
    return held;
}

/// An open file that may be a lock. The mutex of `held` must be locked during its life.
class OpenFile
{
public:
    OpenFile(HeldPlaces& held, int file) : m_held(held), m_file(file)
    {
        if (m_file >= 0 && fstat(m_file, &m_status) != 0) {
            m_status = {};
        }
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    /// Closes the file. But closing any descriptor of a file ends the process's lock of that file,
    /// and another user can give a locked file a second name: then it stays open as long as the
    /// lock.
    ~OpenFile()
    {
        if (Held* const held = m_held.find(m_status)) {
            held->files.push_back(m_file);
        } else if (m_file >= 0) {
            ::close(m_file);
        }
    }

    int get() const { return m_file; }

    /// Whether it can be the lock of a place that this process does not hold.
    bool isUsable() const
    {
        return S_ISREG(m_status.st_mode) && m_status.st_nlink == 1 &&
               m_held.find(m_status) == nullptr;
    }

    /// Whether it is still the file with this name.
    bool isAt(const std::string& path) const
    {
        struct stat status = {};
        return lstat(path.c_str(), &status) == 0 && status.st_dev == m_status.st_dev &&
               status.st_ino == m_status.st_ino;
    }

    /// Makes the file that of a held place, which closes it.
    void keep(const std::string& path)
    {
        m_held.places.push_back({path, m_status.st_dev, m_status.st_ino, {}});
    }

private:
    HeldPlaces& m_held;
    int m_file;
    struct stat m_status = {};
};

class FileLock final : public PlaceLock
{
public:
    FileLock(std::shared_ptr<HeldPlaces> held, std::string path)
        : m_held(std::move(held)), m_path(std::move(path))
    {
    }
    ~FileLock() override
    {
        const std::lock_guard guard(m_held->mutex);
        std::erase_if(m_held->places, [this](const Held& held) {
            if (held.path != m_path) {
                return false;
            }
            for (const int file : held.files) {
                ::close(file);
            }
            return true;
        });
    }

private:
    std::shared_ptr<HeldPlaces> m_held;
    std::string m_path;
};

} // namespace

LockFiles::LockFiles(const std::vector<std::string>& folders)
{
    const auto found = std::find_if(folders.begin(), folders.end(), isShared);
    m_folder = found != folders.end() ? *found : std::string();
}

std::unique_ptr<PlaceLock> LockFiles::lock(const UsbPlace& place, UsbIds ids, PlaceOwner& owner)
{
    owner = {place.text()};
    if (m_folder.empty() || !isPlace(owner.place)) {
        return nullptr;
    }
    const std::string path = fileOf(owner.place);
    const std::shared_ptr<HeldPlaces>& held = heldPlaces();
    const std::lock_guard guard(held->mutex);
    if (held->has(path)) {
        owner.processId = getpid();
        return nullptr;
    }
    OpenFile file(*held, openOrCreate(path));
    if (!file.isUsable()) {
        return nullptr;
    }
    struct flock range = lockOf(ids);
    if (fcntl(file.get(), F_SETLK, &range) != 0) {
        owner = ownerOf(file.get(), owner.place).value_or(owner);
        return nullptr;
    }
    if (!file.isAt(path)) { // removed meanwhile: the next process would create and lock another
        return nullptr;
    }
    file.keep(path);
    return std::make_unique<FileLock>(held, path);
}

std::vector<PlaceOwner> LockFiles::owners()
{
    std::vector<PlaceOwner> owners;
    DIR* const folder = m_folder.empty() ? nullptr : opendir(m_folder.c_str());
    if (folder == nullptr) {
        return owners;
    }
    const std::shared_ptr<HeldPlaces>& held = heldPlaces();
    const std::lock_guard guard(held->mutex);
    while (const dirent* const entry = readdir(folder)) {
        const std::string place = placeOf(entry->d_name);
        if (place.empty()) {
            continue;
        }
        const std::string path = fileOf(place);
        if (held->has(path)) {
            owners.push_back({place, getpid(), {}});
            continue;
        }
        const OpenFile file(*held, ::open(path.c_str(), O_RDONLY | kCarefully));
        if (!file.isUsable()) {
            continue;
        }
        if (std::optional<PlaceOwner> owner = ownerOf(file.get(), place)) {
            owners.push_back(std::move(*owner));
        }
    }
    closedir(folder);
    return owners;
}

std::string LockFiles::fileOf(const std::string& place) const
{
    return m_folder + '/' + fileNameOf(place);
}

} // namespace vornadel
