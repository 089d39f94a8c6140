#include "tests/cli/Program.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vornadel::test
{

namespace
{

constexpr int kPatienceMilliseconds = 20'000;

std::vector<char*> pointersTo(std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

/// The program that was built, unless the environment names another one.
const char* program()
{
    const char* const other = std::getenv("VORNADELCTL");
    return other != nullptr ? other : VORNADELCTL;
}

void closePipe(int& pipe)
{
    if (pipe >= 0) {
        ::close(pipe);
        pipe = -1;
    }
}

} // namespace

Program::Program(std::vector<std::string> arguments)
{
    static const TemporaryFolder state; // not the developer's
    ::setenv("XDG_STATE_HOME", state.path().c_str(), 0);
    arguments.insert(arguments.begin(), program());
    std::array<int, 2> out{};
    std::array<int, 2> err{};
    EXPECT_EQ(::pipe2(out.data(), O_CLOEXEC), 0);
    EXPECT_EQ(::pipe2(err.data(), O_CLOEXEC), 0);
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_adddup2(&files, out[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&files, err[1], STDERR_FILENO);

    sigset_t atDefault;
    sigemptyset(&atDefault);
    for (const int each : {SIGINT, SIGTERM, SIGHUP}) {
        sigaddset(&atDefault, each);
    }
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setsigdefault(&attributes, &atDefault);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
    EXPECT_EQ(::posix_spawn(&m_pid, program(), &files, &attributes, pointersTo(arguments).data(),
                            environ),
              0);
    posix_spawn_file_actions_destroy(&files);
    ::close(out[1]);
    ::close(err[1]);
    m_outPipe = out[0];
    m_errPipe = err[0];
}

Program::~Program()
{
    if (m_pid > 0) {
        ::kill(m_pid, SIGKILL);
        ::waitpid(m_pid, nullptr, 0);
    }
    closePipe(m_outPipe);
    closePipe(m_errPipe);
}

bool Program::readSome(int pipe, std::string& text) const
{
    pollfd readable{pipe, POLLIN, 0};
    if (::poll(&readable, 1, kPatienceMilliseconds) <= 0) {
        return false;
    }
    std::array<char, 4096> bytes{};
    const ssize_t count = ::read(pipe, bytes.data(), bytes.size());
    if (count > 0) {
        text.append(bytes.data(), static_cast<std::size_t>(count));
    }
    return count > 0;
}

bool Program::waitIn(int pipe, std::string& seen, std::string_view text) const
{
    while (seen.find(text) == std::string::npos) {
        if (!readSome(pipe, seen)) {
            return false;
        }
    }
    return true;
}

void Program::send(int signal) const { EXPECT_EQ(::kill(m_pid, signal), 0); }

void Program::stopReading() { closePipe(m_outPipe); }

int Program::finish()
{
    while (m_outPipe >= 0 && readSome(m_outPipe, m_out)) {
    }
    while (readSome(m_errPipe, m_err)) {
    }
    int status = 0;
    EXPECT_EQ(::waitpid(m_pid, &status, 0), m_pid);
    m_pid = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

} // namespace vornadel::test
