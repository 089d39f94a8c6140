#include "cli/RunCommand.h"

#include "cli/Verbs.h"
#include "config/ToolConfig.h"

namespace vornadel
{

namespace
{

/// What is wrong with the options for this verb; null if nothing is.
const char* whyUnfit(const CommandLine& commandLine)
{
    const Verb& verb = *commandLine.verb;
    if (!verb.selectsHub && commandLine.hub.isGiven()) {
        return "this verb asks no hub, so none can be selected";
    }
    return verb.whyUnfit == nullptr ? nullptr : verb.whyUnfit(commandLine);
}

} // namespace

int runCommand(const CommandLine& commandLine, Platform& platform, const std::string& resourcePath,
               std::ostream& out, std::ostream& err, const Environment& env, StopRequest& stop)
{
    const std::string configFile =
        commandLine.configFile.empty() ? resourcePath + "/config.ini" : commandLine.configFile;
    const ToolConfig config = readToolConfig(configFile);
    const Log log;
    CommandResult result;
    const Command command{commandLine, platform, resourcePath, configFile, config, out,
                          err,         env,      stop,         log,        result};
    if (const char* const why = whyUnfit(commandLine)) {
        return fail(command, FailureId::Usage, why);
    }
    const int status = commandLine.verb->run(command);
    if (!commandLine.verb->isFlow && !out.flush()) {
        return fail(command, FailureId::OutputNotWritten, "the output could not be written");
    }
    return status;
}

} // namespace vornadel
