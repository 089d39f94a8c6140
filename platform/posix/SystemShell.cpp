#include "platform/posix/SystemShell.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <optional>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ; // NOLINT(readability-redundant-declaration): macOS does not declare it

namespace vornadel
{

namespace
{

/// What stands at a path, without following a link; nothing unless that is a plain file.
std::optional<struct stat> plainFile(const std::string& path)
{
    struct stat found {
    };
    return lstat(path.c_str(), &found) == 0 && S_ISREG(found.st_mode) ? std::optional(found)
                                                                      : std::nullopt;
}

} // namespace

int SystemShell::run(const std::string& command) { return std::system(command.c_str()); }

int SystemShell::runQuietly(const std::string& command)
{
    std::string shell = "sh";
    std::string option = "-c";
    std::string text = command;
    const std::array<char*, 4> arguments{shell.data(), option.data(), text.data(), nullptr};
    posix_spawn_file_actions_t actions;
    if (posix_spawn_file_actions_init(&actions) != 0) {
        return -1;
    }
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    const int error = posix_spawn(&child, "/bin/sh", &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    int status = -1;
    while (error == 0 && waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

bool SystemShell::exists(const std::string& path) { return access(path.c_str(), F_OK) == 0; }

bool SystemShell::mayAppend(const std::string& path)
{
    const int made = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (made >= 0) {
        close(made);
        return true;
    }
    const std::optional<struct stat> found = plainFile(path);
    return found && found->st_uid == geteuid() && found->st_nlink == 1;
}

bool SystemShell::mayRead(const std::string& path)
{
    const std::optional<struct stat> found = plainFile(path);
    return found && (found->st_uid == geteuid() || found->st_uid == 0);
}

} // namespace vornadel
