#include "platform/StdClock.h"
#include "standins/virtual_hub/CommandLine.h"
#include "standins/virtual_hub/Console.h"
#include "standins/virtual_hub/LineReader.h"
#include "standins/virtual_hub/ServerHost.h"
#include "standins/virtual_hub/VhciHost.h"
#include "standins/virtual_hub/VirtualHub.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <fcntl.h>
#include <iostream>
#include <memory>
#include <optional>
#include <poll.h>
#include <string>
#include <string_view>
#include <sys/signalfd.h>
#include <unistd.h>
#include <vector>

namespace
{

using namespace vornadel;

/// Opens what of standard input, output and error is closed on /dev/null, or a hub's socket would
/// get its number and what is meant for the console. A reader that goes away is no reason to die,
/// and a terminal that is somebody else's at the moment none to stop: the read fails then. So does
/// the write to a file that may not grow.
void prepareStandardFiles()
{
    for (const int file : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(file, F_GETFD) < 0) {
            open("/dev/null", O_RDWR); // the lowest free number is this one
        }
    }
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGTTIN, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

/// The signals that end the program in order, as a file; negative, with errno, when there is none
/// to be had. Before any thread starts: threads inherit what is blocked.
int endingSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction action = {};
        if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler != SIG_IGN) { // nohup
                                                                                        // stays
                                                                                        // nohup
            sigaddset(&signals, signal);
        }
    }
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return signalfd(-1, &signals, SFD_CLOEXEC);
}

void answerLines(Console& console, LineReader& lines)
{
    while (!console.quit()) {
        const std::optional<LineReader::Line> line = lines.next();
        if (!line) {
            return;
        }
        std::cout << (line->tooLong ? "error: the line is too long" : console.answer(line->text))
                  << std::endl;
    }
}

/// Until "quit" or a signal. The end of standard input is no end: the hubs stay.
void takeCommands(Console& console, int signals)
{
    LineReader lines;
    std::array<pollfd, 2> events = {{{signals, POLLIN, 0}, {STDIN_FILENO, POLLIN, 0}}};
    while (!console.quit()) {
        if (poll(events.data(), events.size(), -1) < 0 && errno != EINTR) {
            return;
        }
        if (events[0].revents != 0) {
            return;
        }
        if (events[1].revents == 0) {
            continue;
        }
        std::array<char, 1024> chunk{};
        const ssize_t count = read(STDIN_FILENO, chunk.data(), chunk.size());
        if (count <= 0) {
            events[1].fd = -1;
            if (count == 0) { // after a failed read, what is there may be half a command
                lines.end();
            }
        } else {
            lines.add(std::string_view(chunk.data(), static_cast<std::size_t>(count)));
        }
        answerLines(console, lines);
    }
}

int fail(const std::string& reason)
{
    std::cerr << "vornadel-virtual-hub: " << reason << '\n';
    return kCouldNot;
}

/// The place for the hubs that was asked for; null and a sentence in `error` when it cannot be had.
std::unique_ptr<HubHost> makeHost(const VirtualHubCommandLine& commandLine, const VhciPorts& ports,
                                  Clock& clock, std::string& error)
{
    if (!commandLine.servePort) {
        return std::make_unique<VhciHost>(ports, clock);
    }
    auto server = std::make_unique<ServerHost>(clock);
    if (!server->listen(*commandLine.servePort, error)) {
        return nullptr;
    }
    std::cout << "port " << server->port() << '\n';
    return server;
}

int run(const VirtualHubCommandLine& commandLine)
{
    const int signals = endingSignals();
    if (signals < 0) {
        return fail("cannot wait for signals: " + std::string(std::strerror(errno)));
    }
    const VhciPorts ports("/sys/devices/platform");
    StdClock clock;
    clock.after({}, [] {}); // its thread starts with this, where a failure can still be reported
    std::string error;
    const std::unique_ptr<HubHost> host = makeHost(commandLine, ports, clock, error);
    if (!host) {
        return fail(error);
    }
    const auto complain = [](const std::string& problem) { fail(problem); };
    std::vector<std::unique_ptr<VirtualHub>> hubs;
    for (const SimulatedHubOptions& options : commandLine.hubs) {
        std::shared_ptr<SimulatedHub> hub = SimulatedHub::create(options, clock, error);
        if (!hub) {
            return fail(error);
        }
        const auto number = static_cast<unsigned>(hubs.size() + 1);
        hubs.push_back(std::make_unique<VirtualHub>(number, std::move(hub), *host, complain));
        if (!hubs.back()->start(error)) {
            return fail(error);
        }
    }
    std::cout << "ready" << std::endl;
    if (!std::cout) {
        return fail("cannot write to standard output: " + std::string(std::strerror(errno)));
    }
    Console console(hubs);
    takeCommands(console, signals);
    return kEndedWell;
}

} // namespace

int main(int argc, char** argv)
{
    prepareStandardFiles();
    try {
        VirtualHubCommandLine commandLine;
        if (const auto ended =
                parseVirtualHubCommandLine(argc, argv, commandLine, std::cout, std::cerr)) {
            return *ended;
        }
        return run(commandLine);
    } catch (const std::exception& problem) { // no memory, no thread to be had
        return fail(std::string("cannot start: ") + problem.what());
    }
}
