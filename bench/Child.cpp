#include "bench/Child.h"

#include <array>
#include <cstdlib>
#include <ctime>

#include <csignal>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vornadel::bench
{

namespace
{

double monotonicSeconds()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

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

struct Running {
    pid_t pid = -1;
    int out = -1; // what it writes to standard output
};

/// Discards standard error. exec searches the path.
Running start(std::vector<std::string> command, std::vector<std::string> environment)
{
    for (char** variable = environ; *variable != nullptr; ++variable) {
        environment.emplace_back(*variable);
    }
    const std::vector<char*> argv = pointersTo(command);
    const std::vector<char*> envp = pointersTo(environment);
    std::array<int, 2> pipe{};
    if (::pipe2(pipe.data(), O_CLOEXEC) != 0) {
        return {};
    }
    const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    const pid_t pid = ::fork();
    if (pid == 0) {
        ::dup2(pipe[1], STDOUT_FILENO);
        ::dup2(nowhere, STDERR_FILENO);
        ::execvpe(argv[0], argv.data(), envp.data());
        ::_exit(127);
    }
    ::close(nowhere);
    ::close(pipe[1]);
    return {pid, pipe[0]};
}

/// The first line, or what came before the end.
std::string readLine(int from)
{
    std::string line;
    char c = 0;
    while (::read(from, &c, 1) == 1 && c != '\n') {
        line += c;
    }
    return line;
}

} // namespace

std::optional<StartCost> runUntilPainted(const std::vector<std::string>& command,
                                         const std::vector<std::string>& environment)
{
    const double begin = monotonicSeconds();
    const Running child = start(command, environment);
    if (child.pid < 0) {
        return std::nullopt;
    }
    const double painted = std::strtod(readLine(child.out).c_str(), nullptr);
    int status = 0;
    rusage used{};
    ::wait4(child.pid, &status, 0, &used);
    ::close(child.out);
    if (painted <= begin || !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        return std::nullopt;
    }
    // ru_maxrss is in KiB and includes the time before exec, when the child was a copy of this
    // program: this program must stay the smaller one.
    return StartCost{(painted - begin) * 1e3, static_cast<double>(used.ru_maxrss) / 1024};
}

VirtualDisplay::VirtualDisplay()
{
    const Running server =
        start({"Xvfb", "-displayfd", "1", "-screen", "0", "1600x1200x24", "-nolisten", "tcp"}, {});
    if (server.pid < 0) {
        return;
    }
    m_pid = server.pid;
    const std::string number = readLine(server.out);
    ::close(server.out);
    if (!number.empty()) {
        m_name = ":" + number;
    }
}

VirtualDisplay::~VirtualDisplay()
{
    if (m_pid > 0) {
        ::kill(m_pid, SIGTERM);
        ::waitpid(m_pid, nullptr, 0);
    }
}

} // namespace vornadel::bench
