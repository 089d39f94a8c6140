#include "app/Tool.h"
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

/// Debian's Qt writes to the journal when standard error is no console; a tool's messages belong on
/// standard error.
void writeToStandardError(QtMsgType type, const QMessageLogContext& /*context*/,
                          const QString& message)
{
    std::fprintf(stderr, "%s\n", qUtf8Printable(message));
    if (type == QtFatalMsg && QCoreApplication::startingUp()) {
        // No display is no crash: Qt would abort, with a core file.
        std::fputs("Vornadel: no window can be opened here; vornadelctl works without one\n",
                   stderr);
        std::_Exit(EXIT_FAILURE);
    }
}

struct Arguments {
    std::optional<std::string> simulatedHub; ///< set: work on the simulated hub, with these options
};

/// Reads our own arguments; `strict` refuses what is left over. Nothing when the program is to go
/// on, otherwise its exit status.
std::optional<int> readArguments(int argc, char** argv, bool strict, Arguments& arguments)
{
    CLI::App app("Keeps the firmware of USB 3 hubs.", "Vornadel");
    app.set_version_flag("--version", std::string("Vornadel ") + kToolVersion);
    app.allow_extras(!strict);
    std::string text;
    CLI::Option* simulated = app.add_flag("--simulated-hub", text,
                                          "Work on the built-in simulated hub; =KEY=VALUE,... with "
                                          "the keys image, latency, mode, ids, fault");
    simulated->multi_option_policy(CLI::MultiOptionPolicy::Throw); // the last one would win without
                                                                   // a word
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& ended) {
        const bool wrong = ended.get_exit_code() != static_cast<int>(CLI::ExitCodes::Success);
        app.exit(ended, std::cout, std::cerr);
        return wrong ? kExitUsage : EXIT_SUCCESS;
    }
    if (simulated->count() > 0) {
        arguments.simulatedHub = text == "true" ? "" : text; // what a flag without a value reads as
    }
    return std::nullopt;
}

int chooseAndRun(int argc, char** argv)
{
    Arguments arguments;
    // Help and version need no display, so they come before Qt; what is wrong can be told only once
    // Qt has taken its own arguments out.
    if (const auto ended = readArguments(argc, argv, false, arguments)) {
        return *ended;
    }
    qInstallMessageHandler(writeToStandardError);
    const QApplication application(argc, argv);
    if (const auto ended = readArguments(argc, argv, true, arguments)) {
        return *ended;
    }

    NativePlatform machine;
    Platform real = machine.platform();
    const MainBundle bundle = mainBundle(argv[0]);
    if (!arguments.simulatedHub) {
        return runTool(real, bundle, {});
    }
    std::string error;
    const std::unique_ptr<SimulatedBus> bus =
        SimulatedBus::create(std::string_view(*arguments.simulatedHub), real.clock, error);
    if (!bus) {
        std::cerr << "--simulated-hub: " << error << '\n';
        return kExitUsage;
    }
    Platform platform{*bus, real.shell, real.privileged, real.systemVersion, real.clock};
    return runTool(platform, bundle, " [simulated hub]");
}

} // namespace

int main(int argc, char** argv)
{
    keepStandardFilesOpen();
    try {
        return chooseAndRun(argc, argv);
    } catch (const std::exception& problem) { // no memory, no thread to be had
        std::fprintf(stderr, "Vornadel: %s\n", problem.what());
        return EXIT_FAILURE;
    }
}
