#include "base/WholeFile.h"

#include "base/Descriptor.h"

#include <cerrno>
#include <filesystem>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vornadel
{

namespace
{

namespace fs = std::filesystem;

constexpr mode_t kNewFile = 0666;   // less the umask
constexpr mode_t kOwnerOnly = 0600; // until it has the permissions of the file that it replaces
constexpr mode_t kPermissions = 07777;

constexpr int kMostLinks = 40;
constexpr int kMostNames = 100;

std::string because(int errorNumber) { return std::generic_category().message(errorNumber); }

bool fail(std::string& problem, const std::string& path, const std::string& why)
{
    problem = path;
    problem += ": ";
    problem += why;
    return false;
}

/// Resolves all symbolic links, also when the last one leads to a file that does not exist yet.
/// Returns an error number; 0 means success.
int followLinks(fs::path& path, bool exists)
{
    std::error_code code;
    if (exists) {
        path = fs::canonical(path, code);
        return code.value();
    }
    for (int links = 0; links < kMostLinks; ++links) {
        const fs::path target = fs::read_symlink(path, code);
        if (code) {
            return 0; // nothing has this name yet
        }
        path = path.parent_path() / target;
    }
    return ELOOP;
}

/// A new file in a folder, removed at the end unless it has taken its final place. On failure errno
/// says why.
class TemporaryFile
{
public:
    TemporaryFile(const fs::path& folder, mode_t mode)
    {
        // Short, because the final name may already be as long as a name can be.
        const std::string name = ".vornadel-" + std::to_string(::getpid()) + '-';
        for (int number = 0; !valid() && number < kMostNames; ++number) {
            m_path = folder / (name + std::to_string(number));
            m_file =
                Descriptor(::open(m_path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode));
            if (!valid() && errno != EEXIST) {
                return;
            }
        }
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile()
    {
        if (valid() && !m_inPlace) {
            ::unlink(m_path.c_str());
        }
    }

    bool valid() const { return m_file.valid(); }

    bool write(std::span<const std::uint8_t> bytes) const
    {
        while (!bytes.empty()) {
            const ssize_t count = ::write(m_file.get(), bytes.data(), bytes.size());
            if (count < 0 && errno == EINTR) {
                continue;
            }
            if (count <= 0) {
                return false;
            }
            bytes = bytes.subspan(static_cast<std::size_t>(count));
        }
        return true;
    }

    /// Copies owner and group as far as the system allows, and the permissions. In this order,
    /// because a change of owner clears the set-id bits. A set-id bit is dropped where its owner or
    /// group could not be copied.
    bool resemble(const struct stat& other) const
    {
        const bool sameOwner = ::fchown(m_file.get(), other.st_uid, other.st_gid) == 0;
        const bool sameGroup =
            sameOwner || ::fchown(m_file.get(), static_cast<uid_t>(-1), other.st_gid) == 0;
        mode_t mode = other.st_mode & kPermissions;
        mode &= ~static_cast<mode_t>((sameOwner ? 0 : S_ISUID) | (sameGroup ? 0 : S_ISGID));
        return ::fchmod(m_file.get(), mode) == 0;
    }

    bool takePlaceOf(const fs::path& path)
    {
        m_inPlace = ::fsync(m_file.get()) == 0 && ::rename(m_path.c_str(), path.c_str()) == 0;
        return m_inPlace;
    }

    /// Like takePlaceOf(), but fails if something is there.
    bool takeFreePlace(const fs::path& path)
    {
        if (::fsync(m_file.get()) != 0) {
            return false;
        }
        if (::link(m_path.c_str(), path.c_str()) == 0) {
            return true; // under two names, until the destructor removes the first one
        }
        const bool hasNoLinks = errno == EPERM || errno == EOPNOTSUPP || errno == ENOSYS;
        struct stat found = {};
        return hasNoLinks &&
               (::lstat(path.c_str(), &found) == 0 ? becauseOf(EEXIST) : takePlaceOf(path));
    }

private:
    static bool becauseOf(int errorNumber)
    {
        errno = errorNumber;
        return false;
    }

    fs::path m_path;
    Descriptor m_file;
    bool m_inPlace = false;
};

/// Writes new names to disk. Not every file system can sync a folder; that is no failure.
bool syncFolder(const fs::path& folder)
{
    const Descriptor file(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return file.valid() && (::fsync(file.get()) == 0 || errno == EINVAL || errno == EOPNOTSUPP);
}

fs::path folderOf(const fs::path& file)
{
    return file.has_parent_path() ? file.parent_path() : ".";
}

/// Where a file is to be saved.
struct Place {
    fs::path file; ///< all links resolved
    fs::path folder;
    bool exists = false;
    struct stat old = {}; ///< of the existing file

    mode_t temporaryMode() const { return exists ? kOwnerOnly : kNewFile; }
};

bool findPlace(const std::string& path, Place& place, std::string& problem)
{
    place.exists = ::stat(path.c_str(), &place.old) == 0;
    if (!place.exists && (errno != ENOENT || path.empty())) {
        return fail(problem, path, because(errno));
    }
    if (place.exists && !S_ISREG(place.old.st_mode)) {
        return fail(problem, path,
                    S_ISDIR(place.old.st_mode) ? "it is a folder" : "it is not a regular file");
    }
    if (place.exists && ::faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) != 0) {
        // A writable folder alone would let us replace it.
        return fail(problem, path, because(errno));
    }
    place.file = path;
    if (const int error = followLinks(place.file, place.exists)) {
        return fail(problem, path, because(error));
    }
    place.folder = folderOf(place.file);
    return true;
}

} // namespace

bool canBeSaved(const std::string& path, std::string& problem)
{
    Place place;
    if (!findPlace(path, place, problem)) {
        return false;
    }
    const TemporaryFile file(place.folder, place.temporaryMode());
    return file.valid() || fail(problem, path, because(errno));
}

bool saveWholeFile(const std::string& path, std::span<const std::uint8_t> bytes,
                   std::string& problem)
{
    Place place;
    if (!findPlace(path, place, problem)) {
        return false;
    }
    TemporaryFile file(place.folder, place.temporaryMode());
    if (!file.valid() || !file.write(bytes) || (place.exists && !file.resemble(place.old)) ||
        !file.takePlaceOf(place.file)) {
        return fail(problem, path, because(errno));
    }
    syncFolder(place.folder); // the old file is gone already, so a failure changes nothing
    return true;
}

bool saveNewFile(const std::string& path, std::span<const std::uint8_t> bytes, std::string& problem,
                 mode_t permissions)
{
    const fs::path folder = folderOf(path);
    TemporaryFile file(folder, permissions);
    if (!file.valid() || !file.write(bytes) || !file.takeFreePlace(path)) {
        return fail(problem, path, because(errno));
    }
    if (!syncFolder(folder)) {
        const int error = errno;
        ::unlink(path.c_str());
        return fail(problem, path, because(error));
    }
    return true;
}

} // namespace vornadel
