#include "cli/CommandLine.h"

#include "config/SimulatedHubFlag.h"
#include "config/Version.h"

#include <CLI/CLI.hpp>

namespace vornadel
{

namespace
{

/// Refuses an empty name: with an empty variable in a script, "info $IMAGE" would ask the hub.
std::string refuseEmpty(const std::string& text) { return text.empty() ? "it is empty" : ""; }

std::string refuseOtherPaths(const std::string& text)
{
    return isPath(text) ? ""
                        : "\"" + text + "\" is no port such as 2-3, nor a pair such as 2-3/1-3";
}

void addSelectors(CLI::App& app, HubSelector& hub)
{
    const char* const group = "Which hub";
    app.add_option("-p,--path", hub.path, "The one at this port: either of its two, or both")
        ->check(refuseOtherPaths)
        ->group(group);
    app.add_option("-S,--serial", hub.serialNumber, "The one with this serial number")
        ->check(refuseEmpty)
        ->group(group);
    app.add_option_function<std::string>(
           "--container",
           [&hub](const std::string& text) {
               hub.containerId = containerIdIn(text);
               if (hub.containerId.empty()) {
                   throw CLI::ValidationError("--container", '"' + text + "\" is no Container ID");
               }
           },
           "The one with this Container ID")
        ->group(group);
    app.add_option_function<std::string>(
           "--id",
           [&hub](const std::string& text) {
               hub.id = idsIn(text);
               if (!hub.id) {
                   throw CLI::ValidationError("--id", '"' + text + "\" is no VID:PID in hex");
               }
           },
           "The one with these ids, VID:PID in hex; the\nproduct id of either half")
        ->group(group);
}

/// What is wrong with the options for this verb; empty if nothing is.
const char* whyUnfit(const CommandLine& commandLine)
{
    using Verb = CommandLine::Verb;
    const bool ofImage = commandLine.verb == Verb::Info && !commandLine.image.empty();
    if (ofImage && commandLine.hub.isGiven()) {
        return "info IMAGE asks no hub, so none can be selected";
    }
    if (commandLine.all && commandLine.hub.isGiven()) {
        return "list --all lists every device, so no hub can be selected";
    }
    return nullptr;
}

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
    addSelectors(app, commandLine.hub);
    const SimulatedHubFlag simulatedHub(app);

    CLI::App* update = app.add_subcommand(
        "update", "Write an image to the hub's flash, verify it and\nrestart the hub");
    update->add_option("IMAGE", commandLine.image, "Firmware image (*.bin)")
        ->required()
        ->check(refuseEmpty);
    CLI::App* scalar =
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
    CLI::App* erase = app.add_subcommand(
        "erase", "Erase the hub's whole flash, without asking, and\nrestart the hub");
    CLI::App* info = app.add_subcommand("info", "Show the attached hub, or a firmware image");
    info->add_option("IMAGE", commandLine.image, "Firmware image (*.bin); without it, show the hub")
        ->check(refuseEmpty);
    CLI::App* list = app.add_subcommand("list", "List the attached supported hubs");
    list->add_flag("--all", commandLine.all,
                   "List every USB device, and say which are\nsupported hubs");
    for (CLI::App* verb : {update, scalar, read, erase}) {
        verb->add_flag("--refuse-in-use", commandLine.refuseInUse,
                       "Fail if a disk, a keyboard or another device in\nuse hangs below the hub");
    }

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
    if (const char* const why = whyUnfit(commandLine)) {
        err << why << '\n';
        return kExitUsage;
    }
    return {};
}

} // namespace vornadel
