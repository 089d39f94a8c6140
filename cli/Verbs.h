#pragma once

#include "cli/CommandLine.h"
#include "cli/Environment.h"
#include "cli/Failures.h"
#include "cli/Log.h"
#include "cli/StopRequest.h"
#include "config/ToolConfig.h"
#include "platform/Platform.h"

#include <ostream>
#include <span>
#include <string>
#include <string_view>

namespace CLI
{
class App;
} // namespace CLI

namespace vornadel
{

class EventStream;

/// What every verb works with.
struct Command {
    const CommandLine& line;
    Platform& platform;
    const std::string& resourcePath;
    const std::string& configFile; ///< that has been read
    const ToolConfig& config;      ///< its content
    std::ostream& out;             ///< for words; with --json those of a flow become messages
    std::ostream& rawOut;          ///< standard output for anything else, such as an image
    std::ostream& err;
    const Environment& env;
    StopRequest& stop;
    const Log& log;
    EventStream* events;           ///< null without --json, and in verbs that print one object
    CommandResult& result;         ///< for the last event; verbs fill it in
    const char* configReason = ""; ///< why this configuration was taken

    bool json() const { return line.json; }
};

/// One verb of vornadelctl, in a source of its own.
struct Verb {
    const char* name;    ///< "update"; of a group: "image info"
    const char* summary; ///< for the help, in a sentence or two without the last full stop
    int (*run)(const Command& command); ///< returns the exit status
    /// Adds options and operands; null if there are none.
    void (*addOptions)(CLI::App& verb, CommandLine& line) = nullptr;
    /// Why the options do not fit together; null if they do.
    const char* (*whyUnfit)(const CommandLine& line) = nullptr;
    /// With --json it prints events, the last of them the result. Another verb prints its own
    /// object, see printObject(), and fails if its output cannot be written.
    bool isFlow = false;
    /// The member that names the file it saves. If that is "-", standard output is for the file,
    /// and all words go to standard error. Null: it saves none.
    std::string CommandLine::*output = nullptr;
    bool selectsHub = true;    ///< takes the options that select a hub
    const char* examples = ""; ///< command lines for the help, each with its line end
};

extern const Verb kListVerb;
extern const Verb kInfoVerb;
extern const Verb kUpdateVerb;
extern const Verb kVerifyVerb;
extern const Verb kReadVerb;
extern const Verb kRestoreVerb;
extern const Verb kEraseVerb;
extern const Verb kRestartVerb;
extern const Verb kScalarVerb;
extern const Verb kDoctorVerb;
extern const Verb kAccessShowVerb;
extern const Verb kAccessGrantVerb;
extern const Verb kAccessRevokeVerb;
extern const Verb kWaitVerb;
extern const Verb kImageInfoVerb;
extern const Verb kImageCheckVerb;
extern const Verb kImageGetVerb;
extern const Verb kImageSetVerb;
extern const Verb kImageDiffVerb;
extern const Verb kImagePropertiesVerb;
extern const Verb kVersionVerb;

/// All verbs, in the order of the help.
std::span<const Verb* const> allVerbs();

/// Null if there is none.
const Verb* verbCalled(std::string_view name);

} // namespace vornadel
