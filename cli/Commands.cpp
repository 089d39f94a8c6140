#include "cli/Commands.h"

#include "cli/Verbs.h"
#include "config/ToolConfig.h"

#include <algorithm>
#include <iterator>

namespace vornadel
{

namespace
{

constexpr struct {
    CommandLine::Verb verb;
    int (*run)(const Command& command);
    bool outputIsTheResult; ///< otherwise it does not matter whether the output can be written
} kVerbs[] = {
    {CommandLine::Verb::Update, updateVerb, false}, {CommandLine::Verb::Scalar, scalarVerb, false},
    {CommandLine::Verb::Read, readVerb, false},     {CommandLine::Verb::Erase, eraseVerb, false},
    {CommandLine::Verb::Info, infoVerb, true},      {CommandLine::Verb::List, listVerb, true},
};

} // namespace

int runCommand(const CommandLine& commandLine, Platform& platform, const std::string& resourcePath,
               std::ostream& out, std::ostream& err, bool terminal, StopRequest& stop)
{
    const std::string configFile =
        commandLine.configFile.empty() ? resourcePath + "/config.ini" : commandLine.configFile;
    const ToolConfig config = readToolConfig(configFile);
    if (!config.problem.empty()) {
        const bool named = !commandLine.configFile.empty();
        err << (named ? "--config: " : "") << config.problem << '\n';
        if (named) {
            return kExitUsage;
        }
    }
    const auto& verb = *std::find_if(std::begin(kVerbs), std::end(kVerbs), [&](const auto& each) {
        return each.verb == commandLine.verb;
    });
    const int status = verb.run(
        {commandLine, platform, resourcePath, configFile, config, out, err, terminal, stop});
    if (verb.outputIsTheResult && !out.flush()) {
        err << "the output could not be written\n";
        return kExitFailure;
    }
    return status;
}

} // namespace vornadel
