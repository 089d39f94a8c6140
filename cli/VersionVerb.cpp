#include "cli/Json.h"
#include "cli/Verbs.h"
#include "config/Version.h"

#include <nlohmann/json.hpp>

#include <string>

namespace vornadel
{

namespace
{

int versionVerb(const Command& command)
{
    if (command.json()) {
        printObject(command, {{"version", kToolVersion},
                              {"commit", kToolCommit},
                              {"config", command.configFile},
                              {"configReason", command.configReason},
                              {"log", orNull(command.log.path)},
                              {"resources", command.resourcePath}});
        return kExitSuccess;
    }
    command.out << versionText("vornadelctl") << '\n';
    if (command.line.verbose > 0) {
        command.out << "configuration: " << command.configFile << " (" << command.configReason
                    << ")\n"
                    << "log:           " << (command.log.path.empty() ? "none" : command.log.path)
                    << '\n'
                    << "resources:     " << command.resourcePath << '\n';
    }
    return kExitSuccess;
}

} // namespace

const Verb kVersionVerb = {
    .name = "version",
    .summary = "Show the version; with -v also which configuration is used, and where the log is",
    .run = versionVerb,
    .selectsHub = false,
    .examples = "vornadelctl version -v\n",
};

} // namespace vornadel
