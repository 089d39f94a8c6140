#include "cli/CommandLine.h"

#include "cli/Options.h"
#include "cli/Verbs.h"
#include "config/SimulatedHubFlag.h"
#include "config/Version.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <vector>

namespace vornadel
{

namespace
{

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
    addText(app, "-S,--serial", "TEXT", hub.serialNumber, "The one with this serial number");
    app.get_option("--serial")->group(group);
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

void addOutputOptions(CLI::App& app, CommandLine& line)
{
    const char* const group = "Output";
    addFlag(app, "--json", line.json, "Print JSON, for programs");
    app.add_option("--progress", line.progress, "How to show progress: auto, bar, plain or none")
        ->type_name("HOW")
        ->check(CLI::IsMember({"auto", "bar", "plain", "none"}));
    app.add_option("--color", line.color, "Use colors: auto, always or never")
        ->type_name("WHEN")
        ->check(CLI::IsMember({"auto", "always", "never"}));
    addFlag(app, "-q,--quiet", line.quiet, "Print only failures and results");
    app.add_flag("-v,--verbose", line.verbose, "Print more; twice: log every request to the hub");
    addText(app, "--log-file", "FILE", line.logFile, "Log to this file instead of the usual one");
    for (const char* const name :
         {"--json", "--progress", "--color", "--quiet", "--verbose", "--log-file"}) {
        app.get_option(name)->group(group);
    }
}

/// The parser of a verb, in that of its group if it has one.
CLI::App* addVerb(CLI::App& app, const Verb& verb)
{
    const std::string name = verb.name;
    const std::size_t space = name.find(' ');
    if (space == std::string::npos) {
        return app.add_subcommand(name, verb.summary);
    }
    const std::string group = name.substr(0, space);
    const std::vector<CLI::App*> parents =
        app.get_subcommands([&](const CLI::App* each) { return each->get_name() == group; });
    CLI::App* const parent =
        parents.empty() ? app.add_subcommand(group, "See \"" + group + " --help\"") : parents[0];
    parent->require_subcommand(1);
    return parent->add_subcommand(name.substr(space + 1), verb.summary);
}

/// The parser of all verbs. It stores what it reads in the given command line.
struct Parser {
    explicit Parser(CommandLine& commandLine)
    {
        app.set_version_flag("--version", std::string("vornadelctl ") + kToolVersion);
        app.require_subcommand(1);
        app.fallthrough();
        addText(app, "--config", "FILE", commandLine.configFile,
                "Use this file instead of the tool's config.ini");
        addOutputOptions(app, commandLine);
        addSelectors(app, commandLine.hub);
        simulatedHub.emplace(app);
        for (const Verb* const verb : allVerbs()) {
            parsers.push_back(addVerb(app, *verb));
            if (verb->addOptions != nullptr) {
                verb->addOptions(*parsers.back(), commandLine);
            }
        }
    }

    CLI::App app{"Updates, reads and erases the firmware of USB 3 hubs, without a window.",
                 "vornadelctl"};
    std::optional<SimulatedHubFlag> simulatedHub;
    std::vector<CLI::App*> parsers; ///< of each verb
};

} // namespace

std::optional<int> parseCommandLine(int argc, const char* const* argv, CommandLine& commandLine,
                                    std::ostream& out, std::ostream& err)
{
    Parser parser(commandLine);
    CLI::App& app = parser.app;
    const std::vector<CLI::App*>& parsers = parser.parsers;
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& ended) {
        const bool wrong = ended.get_exit_code() != static_cast<int>(CLI::ExitCodes::Success);
        app.exit(ended, out, err);
        return wrong ? kExitUsage : kExitSuccess;
    }
    commandLine.typed.assign(argv + 1, argv + argc);
    commandLine.simulatedHub = parser.simulatedHub->options();
    const auto parsed = std::find_if(parsers.begin(), parsers.end(),
                                     [](const CLI::App* verb) { return verb->parsed(); });
    commandLine.verb = allVerbs()[static_cast<std::size_t>(parsed - parsers.begin())];
    return {};
}

void useParser(const std::function<void(const CLI::App&)>& use)
{
    CommandLine commandLine;
    const Parser parser(commandLine);
    use(parser.app);
}

} // namespace vornadel
