#include "cli/CommandLine.h"
#include "cli/Interruption.h"
#include "cli/RunCommand.h"
#include "hub/HubTransport.h"
#include "platform/native/NativePlatform.h"
#include "platform/posix/StandardFiles.h"
#include "standins/sim/SimulatedBus.h"

#include <cstdio>
#include <exception>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>

namespace
{

using namespace vornadel;

int run(const CommandLine& commandLine, Platform platform, const char* argv0)
{
    // First, because it would undo the Hub_Abandon() of a signal.
    Hub_UsePlatform(platform.usb, platform.clock);
    StopRequest stop;
    const Interruption interruption(platform.clock, stop);
    Environment env = thisEnvironment();
    env.statusAfterSignals = [&](int status) { return interruption.statusAfter(status); };
    return runCommand(commandLine, platform, thisToolsPlace(argv0).resourcePath, std::cout,
                      std::cerr, env, stop);
}

int chooseAndRun(int argc, char** argv)
{
    CommandLine commandLine;
    if (const auto ended = parseCommandLine(argc, argv, commandLine, std::cout, std::cerr)) {
        if (*ended == kExitSuccess && !std::cout.flush()) {
            std::cerr << "the output could not be written\n";
            return kExitFailure;
        }
        return *ended;
    }
    NativePlatform machine;
    Platform real = machine.platform();
    if (!commandLine.simulatedHub) {
        return run(commandLine, real, argv[0]);
    }
    std::string error;
    const std::unique_ptr<SimulatedBus> bus =
        SimulatedBus::create(std::string_view(*commandLine.simulatedHub), real.clock, error);
    if (!bus) {
        commandLine.simulatedHubProblem = error;
        return run(commandLine, real, argv[0]);
    }
    return run(commandLine, bus->replaceBusOf(real), argv[0]);
}

} // namespace

int main(int argc, char** argv)
{
    keepStandardFilesOpen(ClosedFile::Fails);
    try {
        return chooseAndRun(argc, argv);
    } catch (const std::exception& problem) { // out of memory or threads
        std::fprintf(stderr, "vornadelctl: %s\n", problem.what());
        return kExitFailure;
    }
}
