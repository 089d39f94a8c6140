#include "app/Tool.h"
#include "config/SimulatedHubFlag.h"
#include "config/Version.h"
#include "platform/native/NativePlatform.h"
#include "platform/posix/StandardFiles.h"
#include "standins/sim/SimulatedBus.h"

#include <CLI/CLI.hpp>
#include <QApplication>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace
{

using namespace vornadel;

constexpr int kExitUsage = 2;

/// Writes messages to standard error. Debian's Qt writes them there only if it is a terminal, and
/// to the journal otherwise.
void writeToStandardError(QtMsgType type, const QMessageLogContext& /*context*/,
                          const QString& message)
{
    std::fprintf(stderr, "%s\n", qUtf8Printable(message));
    if (type == QtFatalMsg && QCoreApplication::startingUp()) {
        // Without a display Qt would abort and leave a core file.
        std::fputs("Vornadel: cannot open a window here; vornadelctl works without one\n", stderr);
        std::_Exit(EXIT_FAILURE);
    }
}

/// Reads our own arguments; `strict` refuses all others. Returns the exit status if the program
/// should end here.
std::optional<int> readArguments(int argc, char** argv, bool strict,
                                 std::optional<std::string>& simulatedHubOptions)
{
    CLI::App app("Updates and edits the firmware of USB 3 hubs.", "Vornadel");
    app.set_version_flag("--version", versionText("Vornadel"));
    app.allow_extras(!strict);
    const SimulatedHubFlag simulatedHub(app);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& ended) {
        const bool wrong = ended.get_exit_code() != static_cast<int>(CLI::ExitCodes::Success);
        app.exit(ended, std::cout, std::cerr);
        return wrong ? kExitUsage : EXIT_SUCCESS;
    }
    simulatedHubOptions = simulatedHub.options();
    return std::nullopt;
}

int chooseAndRun(int argc, char** argv)
{
    std::optional<std::string> simulatedHub;
    // Help and version need no display, so they come before Qt. Wrong arguments are found only
    // after Qt has removed its own.
    if (const auto ended = readArguments(argc, argv, false, simulatedHub)) {
        return *ended;
    }
    qInstallMessageHandler(writeToStandardError);
    const QApplication application(argc, argv);
    if (const auto ended = readArguments(argc, argv, true, simulatedHub)) {
        return *ended;
    }

    NativePlatform machine;
    Platform real = machine.platform();
    const ToolPlace place = thisToolsPlace(argv[0]);
    if (!simulatedHub) {
        return runTool(real, place, {});
    }
    std::string error;
    const std::unique_ptr<SimulatedBus> bus =
        SimulatedBus::create(std::string_view(*simulatedHub), real.clock, error);
    if (!bus) {
        std::cerr << "--simulated-hub: " << error << '\n';
        return kExitUsage;
    }
    Platform platform = bus->replaceBusOf(real);
    return runTool(platform, place, " [simulated hub]");
}

} // namespace

int main(int argc, char** argv)
{
    keepStandardFilesOpen();
    try {
        return chooseAndRun(argc, argv);
    } catch (const std::exception& problem) { // out of memory or threads
        std::fprintf(stderr, "Vornadel: %s\n", problem.what());
        return EXIT_FAILURE;
    }
}
