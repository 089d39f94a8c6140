#include "cli/LogFile.h"

#include "base/Descriptor.h"
#include "cli/EventStream.h"
#include "cli/LineStream.h"

#include <cerrno>
#include <filesystem>
#include <memory>
#include <system_error>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vornadel
{

namespace
{

constexpr off_t kLargestLog = 1024L * 1024L;

Descriptor openToAppend(const std::string& path)
{
    // Never blocks, not even on a pipe that nobody reads.
    return Descriptor(
        ::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0600));
}

/// Whether the file is large, and still the one at the path: another process may have begun a new
/// one.
bool isFull(const Descriptor& file, const std::string& path)
{
    struct stat opened = {};
    struct stat there = {};
    return ::fstat(file.get(), &opened) == 0 && S_ISREG(opened.st_mode) &&
           opened.st_size >= kLargestLog && ::stat(path.c_str(), &there) == 0 &&
           there.st_ino == opened.st_ino && there.st_dev == opened.st_dev;
}

Descriptor openRotated(const std::string& path)
{
    Descriptor file = openToAppend(path);
    if (file.valid() && isFull(file, path) && ::flock(file.get(), LOCK_EX) == 0 &&
        isFull(file, path) && ::rename(path.c_str(), (path + ".1").c_str()) == 0) {
        file = openToAppend(path);
    }
    return file;
}

} // namespace

Log openLog(const std::string& path, bool withRequests, const Environment& env,
            std::string& problem)
{
    if (path.empty()) {
        return {};
    }
    const auto file = std::make_shared<Descriptor>(openRotated(path));
    if (!file->valid()) {
        problem = path + ": " + std::generic_category().message(errno);
        return {};
    }
    const std::string process = " [" + std::to_string(::getpid()) + "] ";
    const auto write = [file, process, now = env.now](const std::string& line) {
        const std::string text = utcText(now()) + process + withoutControls(line) + '\n';
        // In one piece, so that the lines of several processes do not mix.
        [[maybe_unused]] const ssize_t written = ::write(file->get(), text.data(), text.size());
    };
    Log log{.path = path, .note = write};
    if (withRequests) {
        log.request = write;
    }
    return log;
}

std::string usualLogFile(const Environment& env)
{
    const std::string folder = stateFolder(env);
    if (folder.empty()) {
        return {};
    }
    std::error_code failed; // then the open fails, too
    std::filesystem::create_directories(folder, failed);
    return folder + "/vornadelctl.log";
}

} // namespace vornadel
