#include "cli/ImageSource.h"

#include "cli/CommandReporter.h"
#include "cli/FlowTarget.h"
#include "cli/ImageFile.h"
#include "cli/ShownText.h"
#include "cli/Verbs.h"
#include "flows/FlashRead.h"
#include "hub/HubTransport.h"

#include <algorithm>
#include <iterator>
#include <vector>

namespace vornadel
{

namespace
{

using Flash = std::vector<std::uint8_t>;

constexpr std::size_t kLongestInput = 64UL * 1024UL * 1024UL;

/// What the flow prints goes to standard error, because the verb's own output is the result.
int readHub(const Command& command, Flash& flash)
{
    CommandLine line = command.line;
    line.json = false;
    line.progress = line.progress == "none" ? "none" : "plain"; // a bar needs standard output
    const Command aside{line,           command.platform, command.resourcePath, command.configFile,
                        command.config, command.err,      command.err,          command.err,
                        command.env,    command.stop,     command.log,          nullptr,
                        command.result};
    int status = kExitSuccess;
    const std::optional<FlowTarget> target = chooseTarget(aside, status);
    if (!target) {
        return status;
    }
    CommandReporter reporter(aside);
    readFlash(flash, reporter, target->options);
    return explainResult(aside, FlowKind::Read, reporter.result(), *target);
}

int readStandardInput(const Command& command, Flash& bytes)
{
    std::istream& in = *command.env.in;
    std::vector<char> piece(64UL * 1024UL);
    while (in && bytes.size() <= kLongestInput) {
        in.read(piece.data(), static_cast<std::streamsize>(piece.size()));
        bytes.insert(bytes.end(), piece.begin(), piece.begin() + in.gcount());
    }
    if (Hub_IsAbandoned()) {
        return fail(command, FailureId::Interrupted, "stopped");
    }
    if (in.bad() || bytes.empty() || bytes.size() > kLongestInput) {
        return fail(command, FailureId::ImageUnreadable,
                    std::string("standard input ") + (bytes.empty() ? "is empty"
                                                      : in.bad()    ? "could not be read"
                                                                    : "is too long for an image"));
    }
    return kExitSuccess;
}

} // namespace

bool isHubSource(const std::string& name) { return name == "hub"; }

bool isStandardInput(const std::string& name) { return name == "-"; }

const char* whySelectorsAreUnfit(bool selectorsGiven, std::initializer_list<std::string> images)
{
    const auto hubs = std::count_if(images.begin(), images.end(), isHubSource);
    if (hubs > 1 || std::count_if(images.begin(), images.end(), isStandardInput) > 1) {
        return "both images are the same";
    }
    return selectorsGiven && hubs == 0
               ? "no image here is \"hub\", so no hub is asked and none can be selected"
               : nullptr;
}

int readSource(const Command& command, const std::string& name, FwImage& image)
{
    if (!isHubSource(name) && !isStandardInput(name)) {
        FwImage_LoadFile(image, name);
        return image.data != nullptr
                   ? kExitSuccess
                   : fail(command, FailureId::ImageUnreadable,
                          shownSource(name) + " could not be read: " + whyUnread(name));
    }
    Flash bytes;
    const int status =
        isHubSource(name) ? readHub(command, bytes) : readStandardInput(command, bytes);
    if (status == kExitSuccess) {
        FwImage_Parse(image, bytes.data(), static_cast<std::int32_t>(bytes.size()));
    }
    return status;
}

int loadSource(const Command& command, const std::string& name, FwImage& image)
{
    if (const int status = readSource(command, name, image); status != kExitSuccess) {
        return status;
    }
    return image.loaded ? kExitSuccess
                        : fail(command, FailureId::ImageRefused,
                               shownSource(name) + " is no firmware image: it has no descriptor "
                                                   "block");
}

std::string shownSource(const std::string& name)
{
    return isStandardInput(name) ? "standard input"
           : isHubSource(name)   ? "the hub's flash"
                                 : printable(name);
}

} // namespace vornadel
