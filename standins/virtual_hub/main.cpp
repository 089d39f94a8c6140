#include "platform/StdClock.h"
#include "platform/posix/EndingSignals.h"
#include "platform/posix/StandardFiles.h"
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

/// Runs until "quit" or a signal. At the end of standard input the hubs stay.
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
            if (count == 0) { // not after a failed read: the rest may be half a command
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

/// The kernel's virtual ports or a server, as asked for; null and a sentence in `error` on failure.
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
    const sigset_t ending = blockEndingSignals();
    const int signals = signalfd(-1, &ending, SFD_CLOEXEC);
    if (signals < 0) {
        return fail("cannot wait for signals: " + std::string(std::strerror(errno)));
    }
    const VhciPorts ports("/sys/devices/platform");
    StdClock clock;
    clock.after({}, [] {}); // starts its thread here, where a failure can still be reported
    std::string error;
    const std::unique_ptr<HubHost> host = makeHost(commandLine, ports, clock, error);
    if (!host) {
        return fail(error);
    }
    const auto complain = [](const std::string& problem) { fail(problem); };
    std::vector<std::unique_ptr<VirtualHub>> hubs;
    const auto connectors = std::make_shared<Connectors>();
    for (SimulatedHubOptions options : commandLine.hubs) {
        const auto number = static_cast<unsigned>(hubs.size() + 1);
        options.number = number;
        std::shared_ptr<SimulatedHub> hub = SimulatedHub::create(options, clock, error, connectors);
        if (!hub) {
            return fail(error);
        }
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
    keepStandardFilesOpen();
    std::signal(SIGTTIN, SIG_IGN); // as a background job, reads fail instead of stopping us
    try {
        VirtualHubCommandLine commandLine;
        if (const auto ended =
                parseVirtualHubCommandLine(argc, argv, commandLine, std::cout, std::cerr)) {
            return *ended;
        }
        return run(commandLine);
    } catch (const std::exception& problem) { // out of memory or threads
        return fail(std::string("cannot start: ") + problem.what());
    }
}
