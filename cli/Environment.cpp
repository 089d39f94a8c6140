#include "cli/Environment.h"

#include "cli/StandardInput.h"

#include <cstdlib>
#include <string>

#include <sys/ioctl.h>
#include <unistd.h>

namespace vornadel
{

std::string stateFolder(const Environment& env)
{
    const std::string state = env.variable("XDG_STATE_HOME");
    const std::string home = env.variable("HOME");
    return state.starts_with('/')  ? state + "/vornadel"
           : home.starts_with('/') ? home + "/.local/state/vornadel"
                                   : std::string();
}

Environment thisEnvironment()
{
    static StandardInput in;
    return {.variable =
                [](const char* name) {
                    const char* const text = std::getenv(name);
                    return std::string(text == nullptr ? "" : text);
                },
            .in = &in,
            .inIsTerminal = ::isatty(STDIN_FILENO) == 1,
            .outIsTerminal = ::isatty(STDOUT_FILENO) == 1,
            .errIsTerminal = ::isatty(STDERR_FILENO) == 1,
            .columns =
                [] {
                    winsize size{};
                    return ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? int{size.ws_col} : 0;
                },
            .now = [] { return std::chrono::system_clock::now(); }};
}

} // namespace vornadel
