#include "standins/sim/FlashFile.h"

#include "base/Descriptor.h"
#include "base/WholeFile.h"
#include "standins/sim/NorFlash.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vornadel
{

namespace
{

namespace fs = std::filesystem;

constexpr mode_t kLockFileMode = 0644;
constexpr int kMostLinks = 40;

std::string because(int errorNumber) { return std::generic_category().message(errorNumber); }

bool fail(std::string& error, const std::string& what)
{
    error = what;
    return false;
}

bool fail(std::string& error, const std::string& what, const std::string& why)
{
    return fail(error, what + ": " + why);
}

bool readAll(int file, std::vector<std::uint8_t>& bytes)
{
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t count = ::read(file, bytes.data() + done, bytes.size() - done);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            errno = count == 0 ? EIO : errno; // truncated since its size was read
            return false;
        }
        done += static_cast<std::size_t>(count);
    }
    return true;
}

/// `path` with all symbolic links resolved, even one to a file that does not exist yet, so that all
/// names of a file share its lock.
fs::path resolvedPath(const std::string& path, std::error_code& code)
{
    fs::path resolved = fs::weakly_canonical(fs::absolute(path, code), code);
    for (int links = 0; !code && links < kMostLinks && fs::is_symlink(resolved); ++links) {
        const fs::path target = fs::read_symlink(resolved, code);
        resolved = fs::weakly_canonical(resolved.parent_path() / target, code);
    }
    return resolved;
}

/// Opens or creates a lock file. Never follows a symbolic link, which could have been planted in a
/// folder that others can write to.
int openLock(const std::string& name)
{
    return ::open(name.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, kLockFileMode);
}

/// The process id in a lock file; 0 if there is none.
std::int64_t readOwner(int file)
{
    std::array<char, 24> text{};
    const ssize_t count = ::pread(file, text.data(), text.size(), 0);
    std::int64_t process = 0;
    if (count > 0) {
        std::from_chars(text.data(), text.data() + count, process);
    }
    return process;
}

/// Best effort: without it the lock holds as well, but others cannot tell who has it.
void writeOwner(int file)
{
    const std::string text = std::to_string(::getpid()) + '\n';
    if (::ftruncate(file, 0) == 0) {
        static_cast<void>(::pwrite(file, text.data(), text.size(), 0) > 0);
    }
}

std::string folderOf(const std::string& path)
{
    const fs::path folder = fs::path(path).parent_path();
    return folder.empty() ? "." : folder.string();
}

} // namespace

FlashFile::FlashFile(std::string path) : m_path(std::move(path)) {}

FlashFile::~FlashFile() { unlock(); }

std::unique_ptr<FlashFile> FlashFile::openOrCreate(const std::string& path,
                                                   const std::vector<std::uint8_t>& initial,
                                                   std::string& error)
{
    std::error_code code;
    const fs::path resolved = resolvedPath(path, code);
    if (code || !resolved.has_filename()) {
        fail(error, path, code ? code.message() : "not a file name");
        return nullptr;
    }
    std::unique_ptr<FlashFile> file(new FlashFile(resolved.string()));
    if (!fs::exists(resolved, code) && !file->fill(initial, error)) {
        return nullptr;
    }
    std::vector<std::uint8_t> bytes;
    if (!file->load(bytes, error)) {
        return nullptr;
    }
    if (::faccessat(AT_FDCWD, file->m_path.c_str(), W_OK, AT_EACCESS) != 0) {
        fail(error, "cannot write " + file->m_path, because(errno));
        return nullptr;
    }
    const std::string lockName = file->m_path + ".lock";
    if (!Descriptor(openLock(lockName)).valid()) {
        fail(error, "cannot open " + lockName, because(errno));
        return nullptr;
    }
    const std::string folder = folderOf(file->m_path);
    if (::faccessat(AT_FDCWD, folder.c_str(), W_OK | X_OK, AT_EACCESS) != 0) {
        fail(error, "cannot replace files in " + folder, because(errno));
        return nullptr;
    }
    return file;
}

bool FlashFile::fill(const std::vector<std::uint8_t>& initial, std::string& error)
{
    std::error_code code;
    const std::string folder = folderOf(m_path);
    fs::create_directories(folder, code);
    if (code) {
        return fail(error, "cannot create the folder " + folder, code.message());
    }
    // Under the lock, so that two programs that start at the same moment do not overwrite each
    // other. Waits for the lock, because the other program may be filling the file right now.
    if (!lock(LOCK_EX)) {
        return fail(error, "cannot lock " + m_path + ".lock", because(errno));
    }
    const bool filled = fs::exists(m_path, code) || store(initial, error);
    unlock();
    return filled;
}

bool FlashFile::load(std::vector<std::uint8_t>& bytes, std::string& error) const
{
    // O_NONBLOCK, because the name may be a pipe.
    const Descriptor file(::open(m_path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat info = {};
    if (!file.valid() || ::fstat(file.get(), &info) != 0) {
        return fail(error, "cannot read " + m_path, because(errno));
    }
    if (S_ISDIR(info.st_mode)) {
        return fail(error, m_path, "it is a folder");
    }
    if (!S_ISREG(info.st_mode)) {
        return fail(error, m_path, "it is not a regular file");
    }
    if (info.st_size != static_cast<off_t>(kSimulatedFlashSize)) {
        return fail(error, m_path,
                    "it is " + std::to_string(info.st_size) + " bytes long; a flash image has " +
                        std::to_string(kSimulatedFlashSize));
    }
    bytes.assign(kSimulatedFlashSize, 0);
    return readAll(file.get(), bytes) || fail(error, "cannot read " + m_path, because(errno));
}

bool FlashFile::store(const std::vector<std::uint8_t>& bytes, std::string& error) const
{
    std::string problem;
    return saveWholeFile(m_path, bytes, problem) || fail(error, "cannot write " + problem);
}

bool FlashFile::lock()
{
    if (!lock(LOCK_EX | LOCK_NB)) {
        return false;
    }
    writeOwner(m_lock);
    return true;
}

bool FlashFile::lock(int operation)
{
    if (locked()) {
        return false;
    }
    const int file = openLock(m_path + ".lock");
    if (file < 0) {
        return false;
    }
    if (::flock(file, operation) != 0) {
        const int reason = errno;
        ::close(file);
        errno = reason;
        return false;
    }
    m_lock = file;
    return true;
}

void FlashFile::unlock()
{
    if (locked()) {
        static_cast<void>(::ftruncate(m_lock, 0) == 0);
        ::close(m_lock);
        m_lock = -1;
    }
}

std::int64_t FlashFile::owner() const
{
    if (locked()) {
        return ::getpid();
    }
    const Descriptor file(openLock(m_path + ".lock"));
    const std::int64_t process = file.valid() ? readOwner(file.get()) : 0;
    if (process == 0 || ::flock(file.get(), LOCK_EX | LOCK_NB) != 0) {
        return process;
    }
    // The owner has died. Its number must not be told of the next one.
    static_cast<void>(::ftruncate(file.get(), 0) == 0);
    return 0;
}

std::string defaultFlashFile()
{
    constexpr const char* kName = "vornadel/simulated-hub.bin";
    const char* const state = std::getenv("XDG_STATE_HOME");
    if (state != nullptr && state[0] == '/') { // a relative path counts as unset
        return (fs::path(state) / kName).string();
    }
    const char* const home = std::getenv("HOME");
    if (home != nullptr && home[0] == '/') {
        return (fs::path(home) / ".local/state" / kName).string();
    }
    return {};
}

} // namespace vornadel
