#include "cli/CommandLine.h"

#include "config/SimulatedHubFlag.h"
#include "config/Version.h"

#include <CLI/CLI.hpp>

namespace vornadel
{

namespace
{

/// Refuses an empty name: with an empty variable in a script, "info $IMAGE" would ask the hub.
std::string refuseEmpty(const std::string& name) { return name.empty() ? "the name is empty" : ""; }

} // namespace

std::optional<int> parseCommandLine(int argc, const char* const* argv, CommandLine& commandLine,
                                    std::ostream& out, std::ostream& err)
{
    CLI::App app("Updates, reads and erases the firmware of USB 3 hubs, without a window.",
                 "vornadelctl");
    app.set_version_flag("--version", std::string("vornadelctl ") + kToolVersion);
    app.require_subcommand(1);
    app.fallthrough();
    app.add_option("--config", commandLine.configFile,
                   "Use this file instead of the tool's config.ini")
        ->check(refuseEmpty);
    const SimulatedHubFlag simulatedHub(app);

    CLI::App* update = app.add_subcommand(
        "update", "Write an image to the hub's flash, verify it and\nrestart the hub");
    update->add_option("IMAGE", commandLine.image, "Firmware image (*.bin)")
        ->required()
        ->check(refuseEmpty);
    const CLI::App* scalar =
        app.add_subcommand("scalar", "The unattended update: like update, with the image\n"
                                     "that config.ini names as FwBin");
    CLI::App* read =
        app.add_subcommand("read", "Read the hub's whole flash, save it to a file and\n"
                                   "restart the hub. If anything fails, an existing\n"
                                   "file stays as it is");
    read->add_option("FILE", commandLine.image,
                     "Where to save it (*.bin); an existing file is\nreplaced")
        ->required()
        ->check(refuseEmpty);
    const CLI::App* erase = app.add_subcommand(
        "erase", "Erase the hub's whole flash, without asking, and\nrestart the hub");
    CLI::App* info = app.add_subcommand("info", "Show the attached hub, or a firmware image");
    info->add_option("IMAGE", commandLine.image, "Firmware image (*.bin); without it, show the hub")
        ->check(refuseEmpty);
    app.add_subcommand("list", "List the attached USB devices, and say which are\nsupported hubs");

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& ended) {
        const bool wrong = ended.get_exit_code() != static_cast<int>(CLI::ExitCodes::Success);
        app.exit(ended, out, err);
        return wrong ? kExitUsage : kExitSuccess;
    }
    commandLine.simulatedHub = simulatedHub.options();
    commandLine.verb = update->parsed()   ? CommandLine::Verb::Update
                       : scalar->parsed() ? CommandLine::Verb::Scalar
                       : read->parsed()   ? CommandLine::Verb::Read
                       : erase->parsed()  ? CommandLine::Verb::Erase
                       : info->parsed()   ? CommandLine::Verb::Info
                                          : CommandLine::Verb::List;
    return std::nullopt;
}

} // namespace vornadel
