#include "cli/RunCommand.h"

#include "cli/EventStream.h"
#include "cli/LineStream.h"
#include "cli/OutputFile.h"
#include "cli/ResultEvent.h"
#include "cli/Verbs.h"
#include "config/ToolConfig.h"

#include <nlohmann/json.hpp>

#include <exception>
#include <optional>

namespace vornadel
{

namespace
{

/// Where the words of a verb go.
class WordsOfVerb
{
public:
    /// Null events: to the streams, without control characters. Otherwise they become messages.
    WordsOfVerb(std::ostream& realOut, std::ostream& realErr, EventStream* events)
        : out(takerFor(realOut, events, "info")), err(takerFor(realErr, events, "warning"))
    {
    }

    LineStream out;
    LineStream err;

private:
    static std::function<void(const std::string&)> takerFor(std::ostream& real, EventStream* events,
                                                            const char* level)
    {
        if (events == nullptr) {
            return
                [&real](const std::string& piece) { real << withoutControls(piece) << std::flush; };
        }
        return [events, level](const std::string& piece) {
            const std::string text = piece.substr(0, piece.find('\n'));
            if (!text.empty()) {
                events->emit("message", {{"level", level}, {"id", nullptr}, {"text", text}});
            }
        };
    }
};

/// Whether the verb saves its file to standard output.
bool outputIsStandard(const CommandLine& commandLine)
{
    const auto output = commandLine.verb->output;
    return output != nullptr && isStandardOutput(commandLine.*output);
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

/// Returns the exit status.
int run(const Command& command)
{
    if (const char* const why = whyUnfit(command.line)) {
        return fail(command, FailureId::Usage, why);
    }
    try {
        return command.line.verb->run(command);
    } catch (const std::exception& problem) { // out of memory
        return fail(command, FailureId::Internal, problem.what());
    }
}

} // namespace

int runCommand(const CommandLine& commandLine, Platform& platform, const std::string& resourcePath,
               std::ostream& out, std::ostream& err, const Environment& env, StopRequest& stop)
{
    const Clock::Duration begin = platform.clock.now();
    const std::string configFile =
        commandLine.configFile.empty() ? resourcePath + "/config.ini" : commandLine.configFile;
    const ToolConfig config = readToolConfig(configFile);
    const Log log;
    const bool isFlow = commandLine.verb->isFlow;
    CommandResult result;
    std::optional<EventStream> events;
    if (commandLine.json && isFlow) {
        events.emplace(out, env, result);
        events->emit("start", {{"verb", commandLine.verb->name}, {"words", commandLine.typed}});
    }
    EventStream* const theEvents = events ? &*events : nullptr;
    int status = kExitSuccess;
    {
        const bool aside = !events && outputIsStandard(commandLine);
        WordsOfVerb words(aside ? err : out, err, theEvents);
        const Command command{commandLine, platform,  resourcePath, configFile, config,
                              words.out,   out,       words.err,    env,        stop,
                              log,         theEvents, result};
        status = run(command);
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
    const Json fields = resultFields(result, status, platform.clock.now() - begin);
    if (events) {
        events->emit("result", fields);
    } else if (commandLine.json && !result.printed) {
        Json object = {{"v", 1}};
        object.update(fields);
        out << textOf(object, 2) << '\n' << std::flush;
    }
    return status;
}

} // namespace vornadel
