#include "cli/RunCommand.h"

#include "cli/EventStream.h"
#include "cli/HubSelector.h"
#include "cli/LineStream.h"
#include "cli/LogFile.h"
#include "cli/NextCommand.h"
#include "cli/OutputFile.h"
#include "cli/ResultEvent.h"
#include "cli/Verbs.h"
#include "config/ConfigPlaces.h"
#include "config/ToolConfig.h"
#include "config/Version.h"
#include "hub/HubTransport.h"
#include "hub/RequestText.h"

#include <nlohmann/json.hpp>

#include <exception>
#include <optional>
#include <string>

namespace vornadel
{

namespace
{

constexpr const char* kRed = "\x1b[31m";
constexpr const char* kNoPaint = "\x1b[0m";

/// Where the words of a verb go, apart from the log: as messages into the events, or to the
/// streams without control characters.
class WordsOfVerb
{
public:
    struct Places {
        std::ostream& out;
        std::ostream& err;
        EventStream* events; ///< may be null
        bool isQuiet;        ///< drops what goes to `out`
        bool hasColour;      ///< of what goes to `err`
    };

    WordsOfVerb(const Places& places, const Log& log)
        : out([=, &log](const std::string& piece) { say(places, log, piece); }),
          err([=, &log](const std::string& piece) { warn(places, log, piece); })
    {
    }

    LineStream out;
    LineStream err;

private:
    static void say(const Places& places, const Log& log, const std::string& piece)
    {
        log.note(lineOf(piece));
        if (places.events != nullptr) {
            emit(*places.events, "info", piece);
        } else if (!places.isQuiet) {
            places.out << withoutControls(piece) << std::flush;
        }
    }

    static void warn(const Places& places, const Log& log, const std::string& piece)
    {
        log.note(lineOf(piece));
        if (places.events != nullptr) {
            emit(*places.events, "warning", piece);
            return;
        }
        const bool paints = places.hasColour && !piece.starts_with("  ");
        const std::string line = withoutControls(lineOf(piece));
        places.err << (paints ? kRed + line + kNoPaint : line)
                   << (piece.ends_with('\n') ? "\n" : "") << std::flush;
    }

    static std::string lineOf(const std::string& piece)
    {
        return piece.substr(0, piece.find('\n'));
    }

    static void emit(EventStream& events, const char* level, const std::string& piece)
    {
        if (const std::string text = lineOf(piece); !text.empty()) {
            events.emit("message", {{"level", level}, {"id", nullptr}, {"text", text}});
        }
    }
};

bool hasColour(const CommandLine& line, const Environment& env)
{
    return line.color == "always" ||
           (line.color == "auto" && env.errIsTerminal && env.variable("NO_COLOR").empty());
}

/// What is wrong with the options for this verb; null if nothing is.
const char* whyUnfit(const CommandLine& commandLine)
{
    const Verb& verb = *commandLine.verb;
    if (commandLine.json && outputIsStandard(commandLine)) {
        return "standard output cannot take both the file and the output of --json";
    }
    if (!verb.selectsHub && commandLine.hub.isGiven()) {
        return "this verb asks no hub, so none can be selected";
    }
    return verb.whyUnfit == nullptr ? nullptr : verb.whyUnfit(commandLine);
}

/// The hub of $VORNADEL_PATH, if the command line selects none. Returns the exit status.
int takeSelector(const Command& command, CommandLine& line)
{
    const std::string path = command.env.variable("VORNADEL_PATH");
    if (path.empty() || line.hub.isGiven() || !line.verb->selectsHub) {
        return kExitSuccess;
    }
    if (!isPath(path)) {
        return fail(command, FailureId::Usage, "$VORNADEL_PATH is no port: " + path);
    }
    line.hub.path = path;
    return kExitSuccess;
}

/// `line` is that of the command.
int run(const Command& command, CommandLine& line)
{
    try {
        if (!line.usageProblem.empty()) {
            return fail(command, FailureId::Usage, line.usageProblem);
        }
        if (!line.simulatedHubProblem.empty()) {
            return fail(command, FailureId::SimulatedHub,
                        "--simulated-hub: " + line.simulatedHubProblem);
        }
        if (const char* const why = whyUnfit(line)) {
            return fail(command, FailureId::Usage, why);
        }
        const int status = takeSelector(command, line);
        return status == kExitSuccess ? line.verb->run(command) : status;
    } catch (const std::exception& problem) { // out of memory
        return fail(command, FailureId::Internal, problem.what());
    }
}

/// Tells the log of each request while it lives.
class RequestsInLog
{
public:
    explicit RequestsInLog(const Log& log)
    {
        if (log.request) {
            Hub_ObserveRequests([&log](const ControlRequest& request, std::uint32_t status) {
                log.request(Hub_RequestText(request) + ": " + std::to_string(status));
            });
        }
    }
    RequestsInLog(const RequestsInLog&) = delete;
    RequestsInLog& operator=(const RequestsInLog&) = delete;
    ~RequestsInLog() { Hub_ObserveRequests({}); }
};

/// "ended with 7 [stalled]"
std::string endText(const CommandResult& result, int status)
{
    return "ended with " + std::to_string(status) +
           (status != kExitSuccess && result.failure
                ? std::string(" [") + kindOf(result.failure->id).name + ']'
                : "");
}

} // namespace

int runCommand(const CommandLine& commandLine, Platform& platform, const std::string& resourcePath,
               std::ostream& out, std::ostream& err, const Environment& env, StopRequest& stop)
{
    const Clock::Duration begin = platform.clock.now();
    CommandLine line = commandLine;
    const bool isFlow = line.verb->isFlow;
    const ConfigPlace place = chooseConfig(
        {line.configFile, env.systemConfigFolder, resourcePath + "/config.ini"}, env.variable);
    const ToolConfig config = readToolConfig(place.file);
    std::string logProblem;
    const Log file = openLog(line.logFile.empty() ? usualLogFile(env) : line.logFile,
                             line.verbose > 1, env, logProblem);
    CommandResult result;
    std::optional<EventStream> events;
    if (line.json && isFlow) {
        events.emplace(out, env, result);
        events->emit("start", {{"verb", line.verb->name}, {"words", line.typed}});
    }
    EventStream* const theEvents = events ? &*events : nullptr;
    int status = kExitSuccess;
    {
        const bool aside = !events && outputIsStandard(line);
        WordsOfVerb words(
            {aside ? err : out, err, theEvents, line.quiet && isFlow, hasColour(line, env)}, file);
        Log log = file; // of the verb: with -v its notes are also shown
        if (line.verbose > 0) {
            log.note = [&](const std::string& note) {
                file.note(note);
                if (!events) {
                    err << withoutControls(note) << '\n' << std::flush; // no failure, so not red
                }
            };
        }
        const Command command{line,      platform,  resourcePath, place.file,  config,
                              words.out, out,       words.err,    env,         stop,
                              log,       theEvents, result,       place.reason};
        file.note(versionText("vornadelctl") + ":" + commandAgain(command, {}).substr(11));
        file.note("configuration: " + place.file + " (" + place.reason + ')');
        const RequestsInLog requests(log);
        status = line.logFile.empty() || logProblem.empty()
                     ? run(command, line)
                     : fail(command, FailureId::LogUnusable, "--log-file: " + logProblem);
        words.out.flush();
        if (!isFlow && !out.flush() && status == kExitSuccess) {
            status = fail(command, FailureId::OutputNotWritten, "the output could not be written");
        }
        if (const int stopped = env.statusAfterSignals(status); stopped != status) {
            status = stopped;
            if (!result.failure) {
                fail(command, FailureId::Interrupted, "stopped");
            }
            command.err << "Interrupted\n";
        }
    }
    file.note(endText(result, status));
    const Json fields = resultFields(result, status, platform.clock.now() - begin);
    if (events) {
        events->emit("result", fields);
    } else if (line.json && !result.printed) {
        Json object = {{"v", 1}};
        object.update(fields);
        out << textOf(object, 2) << '\n' << std::flush;
    }
    return status;
}

} // namespace vornadel
