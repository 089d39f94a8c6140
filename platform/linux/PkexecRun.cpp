#include "platform/linux/PkexecRun.h"

#include <array>
#include <cerrno>
#include <condition_variable>
#include <csignal>
#include <cstdio>
#include <deque>
#include <fcntl.h>
#include <mutex>
#include <optional>
#include <spawn.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>

namespace vornadel
{

namespace
{

constexpr int kNotRun = 127; ///< a shell uses the same status for a missing command

/// Owns a file descriptor, or none.
class Descriptor
{
public:
    explicit Descriptor(int number) : m_number(number) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor()
    {
        if (m_number >= 0) {
            close(m_number);
        }
    }

    int number() const { return m_number; }
    bool isOpen() const { return m_number >= 0; }

    /// Opens the same file again, with its own lock.
    int reopen() const
    {
        return m_number < 0 ? -1
                            : open(("/proc/self/fd/" + std::to_string(m_number)).c_str(),
                                   O_RDONLY | O_CLOEXEC);
    }

private:
    int m_number;
};

/// Holds a shared lock while it lives.
class LockedFile final : public HubHold
{
public:
    explicit LockedFile(int number) : m_file(number) {}

    /// False if somebody holds the exclusive lock. Without a file there is nothing to wait for.
    bool lock() { return !m_file.isOpen() || flock(m_file.number(), LOCK_SH | LOCK_NB) == 0; }

private:
    Descriptor m_file;
};

/// Starts `program script` with no signal blocked, whatever the calling thread blocks, and with
/// `input` as standard input if that is open.
std::optional<pid_t> spawn(std::string program, std::string script, const Descriptor& input)
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
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions); // cannot fail here
    if (input.isOpen()) {
        posix_spawn_file_actions_adddup2(&actions, input.number(), STDIN_FILENO);
    }
    pid_t child = 0;
    const int error =
        posix_spawnp(&child, program.c_str(), &actions, &attributes, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    return error == 0 ? std::optional(child) : std::nullopt;
}

/// -1 if a signal ended it.
int exitStatusOf(pid_t child)
{
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

} // namespace

struct PkexecRun::Shared {
    Shared(std::string pkexec, Tell teller) : program(std::move(pkexec)), tell(std::move(teller)) {}

    std::optional<pid_t> spawnFront() const
    {
        return spawn(program, scripts.front(), Descriptor(lockFile.reopen()));
    }

    const std::string program;
    const Tell tell;
    const Descriptor lockFile{memfd_create("vornadel-hub", MFD_CLOEXEC)};

    std::mutex mutex;                ///< guards what follows
    std::deque<std::string> scripts; ///< the first one runs
    std::optional<int> lastStatus;   ///< of the script that ended last
    std::condition_variable ended;   ///< no script is left
};

PkexecRun::PkexecRun(std::string program, Tell tell)
    : m_shared(std::make_shared<Shared>(std::move(program), std::move(tell)))
{
}

void PkexecRun::tellStandardError(const std::string& line)
{
    std::fprintf(stderr, "%s\n", line.c_str());
}

void PkexecRun::workThrough(const std::shared_ptr<Shared>& shared, int child)
{
    std::optional<pid_t> running = child;
    for (bool more = true; more;) {
        const bool started = running.has_value();
        const int status = started ? exitStatusOf(*running) : 0;
        std::string script;
        {
            const std::lock_guard lock(shared->mutex);
            script = std::move(shared->scripts.front());
            shared->scripts.pop_front();
            more = !shared->scripts.empty();
            running = more ? shared->spawnFront() : std::nullopt;
            shared->lastStatus = started && status >= 0 ? std::optional(status) : std::nullopt;
            shared->ended.notify_all();
        }
        if (!started) {
            shared->tell(script + " could not be started");
        } else if (status == kNotRun) {
            shared->tell(script + " ended with status 127: not authorized, no agent to ask for "
                                  "the password, or a missing command");
        }
    }
}

bool PkexecRun::start(const std::string& script)
{
    const std::lock_guard lock(m_shared->mutex);
    std::deque<std::string>& scripts = m_shared->scripts;
    if (!scripts.empty()) {
        if (scripts.back() == script) {
            m_shared->tell(script + " has been started already and has not ended yet");
        } else {
            scripts.push_back(script);
        }
        return true;
    }
    scripts.push_back(script);
    const std::optional<pid_t> child = m_shared->spawnFront();
    if (!child) {
        scripts.clear();
        return false;
    }
    try {
        std::thread(workThrough, m_shared, *child).detach();
    } catch (const std::system_error&) {
        // No thread available. The script runs all the same, and stays a zombie until we end.
        scripts.clear();
    }
    return true;
}

std::optional<int> PkexecRun::wait()
{
    std::unique_lock lock(m_shared->mutex);
    m_shared->ended.wait(lock, [this] { return m_shared->scripts.empty(); });
    return m_shared->lastStatus;
}

std::unique_ptr<HubHold> PkexecRun::holdHub()
{
    auto hold = std::make_unique<LockedFile>(m_shared->lockFile.reopen());
    if (!hold->lock()) {
        return nullptr;
    }
    return hold;
}

} // namespace vornadel
