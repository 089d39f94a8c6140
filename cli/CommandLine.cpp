#include "cli/CommandLine.h"

#include "cli/Failures.h"
#include "cli/HelpText.h"
#include "cli/Json.h"
#include "cli/Options.h"
#include "cli/ResultEvent.h"
#include "cli/Verbs.h"
#include "config/SimulatedHubFlag.h"
#include "config/Version.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <iterator>
#include <sstream>
#include <vector>

namespace vornadel
{

namespace
{

/// Lines, each after two spaces.
std::string indented(const std::string& lines)
{
    std::istringstream in(lines);
    std::string text;
    for (std::string line; std::getline(in, line);) {
        text += "  " + line + '\n';
    }
    return text;
}

std::string refuseOtherPaths(const std::string& text)
{
    return isPath(text) ? ""
                        : "\"" + text + "\" is no port such as 2-3, nor a pair such as 2-3/1-3";
}

void addSelectors(CLI::App& app, HubSelector& hub)
{
    const char* const group = "Which hub";
    app.add_option("-p,--path", hub.path, "The one at this port: either of its two, or both")
        ->option_text("PLACE")
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
        ->option_text("ID")
        ->group(group);
    app.add_option_function<std::string>(
           "--id",
           [&hub](const std::string& text) {
               hub.id = idsIn(text);
               if (!hub.id) {
                   throw CLI::ValidationError("--id", '"' + text + "\" is no VID:PID in hex");
               }
           },
           "The one with these ids, VID:PID in hex; the product id of either half")
        ->option_text("VID:PID")
        ->group(group);
}

void addOutputOptions(CLI::App& app, CommandLine& line)
{
    const char* const group = "Output";
    addFlag(app, "--json", line.json, "Print JSON, for programs");
    app.add_option("--progress", line.progress, "How to show progress: auto, bar, plain or none")
        ->option_text("HOW")
        ->check(CLI::IsMember({"auto", "bar", "plain", "none"}));
    app.add_option("--color", line.color, "Use colors: auto, always or never")
        ->option_text("WHEN")
        ->check(CLI::IsMember({"auto", "always", "never"}));
    addFlag(app, "-q,--quiet", line.quiet, "Print only failures and results");
    app.add_flag("-v,--verbose", line.verbose, "Print more; twice: log every request to the hub");
    addText(app, "--log-file", "FILE", line.logFile, "Log to this file instead of the usual one");
    for (const char* const name :
         {"--json", "--progress", "--color", "--quiet", "--verbose", "--log-file"}) {
        app.get_option(name)->group(group);
    }
}

constexpr struct {
    const char* name;
    const char* summary;
} kGroups[] = {
    {"image", "Look into firmware images, compare and edit them"},
    {"access", "Let users open hubs, or withdraw that"},
};

/// The parser of a group of verbs.
CLI::App* groupCalled(CLI::App& app, const std::string& name)
{
    const std::vector<CLI::App*> there =
        app.get_subcommands([&](const CLI::App* each) { return each->get_name() == name; });
    if (!there.empty()) {
        return there.front();
    }
    const auto* const row = std::find_if(std::begin(kGroups), std::end(kGroups),
                                         [&](const auto& each) { return each.name == name; });
    CLI::App* const group = app.add_subcommand(name, row == std::end(kGroups) ? "" : row->summary);
    group->require_subcommand(1);
    return group;
}

/// The parser of a verb, in that of its group if it has one.
CLI::App* addVerb(CLI::App& app, const Verb& verb, CommandLine& line)
{
    const std::string name = verb.name;
    const std::size_t space = name.find(' ');
    CLI::App* const parent =
        space == std::string::npos ? &app : groupCalled(app, name.substr(0, space));
    CLI::App* const parser = parent->add_subcommand(
        name.substr(space == std::string::npos ? 0 : space + 1), std::string(verb.summary) + '.');
    if (verb.addOptions != nullptr) {
        verb.addOptions(*parser, line);
    }
    parser->group("Verbs");
    parser->footer("Examples:\n" + indented(verb.examples) +
                   "\n\"vornadelctl help\" shows the options of all verbs and the exit statuses.");
    return parser;
}

std::vector<std::string> verbsOf(const CLI::App& parser)
{
    std::vector<std::string> names;
    for (const CLI::App* const verb : parser.get_subcommands({})) {
        names.push_back(verb->get_name());
    }
    return names;
}

/// The first word that a parser did not understand and that is no option; empty if there is none.
std::string unknownWord(const CLI::App& parser)
{
    const std::vector<std::string> words = parser.remaining();
    const auto found = std::find_if(words.begin(), words.end(),
                                    [](const auto& word) { return !word.starts_with('-'); });
    return found == words.end() ? std::string() : *found;
}

std::string noSuchVerb(const std::string& word, const CLI::App& parser)
{
    return "there is no verb \"" + word + "\"; did you mean \"" +
           nearestWord(word, verbsOf(parser)) + "\"?";
}

/// What is wrong with a command line. `innermost` is the last verb or group that was understood.
Failure usageFailure(const CLI::ParseError& error, const CLI::App& app, const CLI::App& innermost,
                     const std::string& names)
{
    std::string what = error.what();
    if (!innermost.get_subcommands({}).empty() &&
        error.get_name() != CLI::ValidationError("", "").get_name()) {
        const std::string own = unknownWord(innermost);
        const std::string word = own.empty() ? unknownWord(app) : own;
        what = word.empty() ? "a verb is missing" : noSuchVerb(word, innermost);
    }
    return {FailureId::Usage, what, kindOf(FailureId::Usage).state, "vornadelctl help" + names};
}

/// The parser of the verb that `words` call; null after an unknown one, which has been told.
const CLI::App* parserOf(const CLI::App& app, const std::vector<std::string>& words,
                         std::ostream& err)
{
    const CLI::App* parser = &app;
    for (const std::string& word : words) {
        const auto next =
            parser->get_subcommands([&](const CLI::App* each) { return each->get_name() == word; });
        if (next.empty()) {
            printFailure(err,
                         {FailureId::Usage, noSuchVerb(word, *parser),
                          kindOf(FailureId::Usage).state, "vornadelctl help"},
                         {});
            return nullptr;
        }
        parser = next.front();
    }
    return parser;
}

/// The parser of all verbs. It stores what it reads in the given command line.
struct Parser {
    explicit Parser(CommandLine& commandLine)
    {
        app.formatter(helpFormatter());
        app.set_help_flag("-h,--help", "Show this help, or that of a verb");
        app.set_version_flag("--version", versionText("vornadelctl"), "Show the version");
        app.require_subcommand(1);
        app.fallthrough();
        app.footer("Examples:\n" +
                   indented("vornadelctl list\n"
                            "vornadelctl --path 2-3 update new.bin\n"
                            "vornadelctl image set old.bin serial=SN0002 -o new.bin\n"
                            "vornadelctl help update\n") +
                   "\nExit status:\n" + exitStatusText());
        addText(app, "--config", "FILE", commandLine.configFile,
                "Use this file instead of the usual config.ini");
        addSelectors(app, commandLine.hub);
        addOutputOptions(app, commandLine);
        simulatedHub.emplace(app);
        for (const Verb* const verb : allVerbs()) {
            parsers.push_back(addVerb(app, *verb, commandLine));
        }
        help = app.add_subcommand("help", "Show this help, or that of a verb");
        addOperands(*help, "VERB", helpWords, Operand::Optional, "The verb");
        for (CLI::App* const verb : app.get_subcommands({})) {
            verb->group("Verbs");
        }
    }

    CLI::App app{"Keeps the firmware of USB 3 hubs: reads, writes, compares and edits it, without "
                 "a window.",
                 "vornadelctl"};
    std::optional<SimulatedHubFlag> simulatedHub;
    std::vector<CLI::App*> parsers; ///< of each verb
    CLI::App* help;                 ///< the verb
    std::vector<std::string> helpWords;
};

/// Prints the help of the verb that `words` call. Returns the exit status.
int printHelp(const CLI::App& app, const std::vector<std::string>& words, std::ostream& out,
              std::ostream& err)
{
    const CLI::App* const verb = parserOf(app, words, err);
    if (verb == nullptr) {
        return kExitUsage;
    }
    std::string name = app.get_name();
    for (const std::string& word : words) {
        name += ' ' + word;
    }
    out << verb->get_formatter()->make_help(verb, name, CLI::AppFormatMode::Normal);
    return kExitSuccess;
}

} // namespace

std::optional<int> parseCommandLine(int argc, const char* const* argv, CommandLine& commandLine,
                                    std::ostream& out, std::ostream& err)
{
    Parser parser(commandLine);
    CLI::App& app = parser.app;
    const std::vector<CLI::App*>& parsers = parser.parsers;
    commandLine.typed.assign(argv + 1, argv + argc);
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& asked) { // help or version
        app.exit(asked, out, err);
        return kExitSuccess;
    } catch (const CLI::ParseError& error) {
        const CLI::App* innermost = &app;
        std::string names;
        while (!innermost->get_subcommands().empty()) {
            innermost = innermost->get_subcommands().front();
            names += ' ' + innermost->get_name();
        }
        const Failure failure = usageFailure(error, app, *innermost, names);
        const auto called = std::find(parsers.begin(), parsers.end(), innermost);
        const bool asksForJson = std::find(commandLine.typed.begin(), commandLine.typed.end(),
                                           "--json") != commandLine.typed.end();
        if (called != parsers.end() && asksForJson) {
            commandLine.verb = allVerbs()[static_cast<std::size_t>(called - parsers.begin())];
            commandLine.json = true;
            commandLine.usageProblem = failure.what;
            return {};
        }
        if (asksForJson) { // without a verb there are neither events nor a configuration
            Json object = {{"v", 1}};
            object.update(resultFields({.failure = failure}, kExitUsage, {}));
            out << textOf(object, 2) << '\n';
        }
        printFailure(err, failure, {});
        return kExitUsage;
    }
    if (parser.help->parsed()) {
        return printHelp(app, parser.helpWords, out, err);
    }
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
