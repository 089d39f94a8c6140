#include "platform/linux/PkexecRun.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <optional>
#include <spawn.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace vornadel
{

namespace
{

constexpr int kNotRun = 127; ///< also what a shell ends with when a command is missing

/// Starts `program script` with no signal blocked, whatever the calling thread blocks.
std::optional<pid_t> spawn(std::string program, std::string script)
{
    const std::array<char*, 3> arguments{program.data(), script.data(), nullptr};
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_t attributes;
    if (posix_spawnattr_init(&attributes) != 0) {
        return std::nullopt;
    }
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
    pid_t child = 0;
    const int error =
        posix_spawnp(&child, program.c_str(), nullptr, &attributes, arguments.data(), environ);
    posix_spawnattr_destroy(&attributes);
    return error == 0 ? std::optional(child) : std::nullopt;
}

void waitFor(pid_t child, const std::string& script, const PkexecRun::Tell& tell)
{
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (WIFEXITED(status) && WEXITSTATUS(status) == kNotRun) {
        tell(script +
             " ended with 127: no authorization, no agent to ask for it, or a command is missing");
    }
}

} // namespace

void PkexecRun::tellStandardError(const std::string& line)
{
    std::fprintf(stderr, "%s\n", line.c_str());
}

bool PkexecRun::start(const std::string& script)
{
    const std::optional<pid_t> child = spawn(m_program, script);
    if (!child) {
        return false;
    }
    try {
        std::thread(waitFor, *child, script, m_tell).detach();
    } catch (const std::system_error&) {
        // No thread to be had: the script runs all the same, its exit status stays until this
        // process ends.
        return true;
    }
    return true;
}

} // namespace vornadel
