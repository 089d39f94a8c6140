#include "cli/CommandReporter.h"
#include "cli/DryRun.h"
#include "cli/FlowTarget.h"
#include "cli/HubChoices.h"
#include "cli/ImageFile.h"
#include "cli/ImageSource.h"
#include "cli/Options.h"
#include "cli/SaveFirst.h"
#include "cli/ShownText.h"
#include "cli/SupportIds.h"
#include "cli/Verbs.h"
#include "flows/FirmwareUpdate.h"
#include "flows/ScalarUpdate.h"

#include <cstdint>
#include <filesystem>
#include <utility>

namespace vornadel
{

namespace
{

std::string planFor(const FwImage& image, const std::string& name)
{
    return ", write " + name + " (" + std::to_string(image.size) + " bytes, version " +
           hex4(storedNumber(image.version)) + ") and compare";
}

int write(const Command& command, const FwImage& image, const std::string& name)
{
    if (const std::string why = whyRefused(image); !why.empty()) {
        return refuseImage(command, name, why);
    }
    int status = kExitSuccess;
    std::optional<FlowTarget> target = chooseTarget(command, status);
    if (!target) {
        return status;
    }
    // After the choice, so that a device with these ids is no hub to choose from.
    if (status = supportIds(command, image); status != kExitSuccess) {
        return status;
    }
    const WantedFlash wanted{.begin = bytesOf(image),
                             .alreadySo = "Already up to date: the flash holds this image"};
    if (isDryRun(command.line)) {
        return tellPlan(command, *target, {planFor(image, name), wanted});
    }
    if (status = saveFirst(command, *target, wanted); status != kExitSuccess) {
        return status;
    }
    CommandReporter reporter(command);
    updateFirmware(image, name, reporter, target->options);
    return explainResult(command, FlowKind::Update, reporter.result(), *target);
}

int updateVerb(const Command& command)
{
    FwImage image;
    const std::string& path = command.line.image;
    if (isStandardInput(path)) {
        const int status = loadSource(command, path, image);
        return status == kExitSuccess ? write(command, image, shownSource(path)) : status;
    }
    return FwImage_LoadFile(image, path) ? write(command, image, path)
                                         : failToLoad(command, image, path);
}

/// With the image that the configuration names. It lies beside the configuration file.
int scalarVerb(const Command& command)
{
    if (const int status = requireConfiguration(command); status != kExitSuccess) {
        return status;
    }
    const std::string& name = command.config.fwbinPath;
    if (name.empty()) {
        return fail(command, FailureId::ConfigUnusable,
                    command.configFile + ": FwBin names no image");
    }
    const std::filesystem::path beside = std::filesystem::path(command.configFile).parent_path();
    const std::string folder = beside.empty() ? "." : beside.string();
    FwImage image;
    loadConfiguredImage(image, folder, name);
    return image.loaded ? write(command, image, name)
                        : failToLoad(command, image, folder + '/' + name);
}

const char* whyUpdateIsUnfit(const CommandLine& line)
{
    return isHubSource(line.image)
               ? "a hub cannot be updated from itself; a file called hub is ./hub"
               : whyDryRunIsUnfit(line);
}

void addUpdateOptions(CLI::App& verb, CommandLine& line)
{
    addOperand(verb, "IMAGE", line.image, Operand::Required,
               "Firmware image (*.bin); -: from standard input");
    addWriteOptions(verb, line);
}

} // namespace

const Verb kUpdateVerb = {
    .name = "update",
    .summary = "Save the hub's flash, write an image to it, verify it and restart the hub. A flash "
               "that holds the image already is left alone",
    .run = updateVerb,
    .addOptions = addUpdateOptions,
    .whyUnfit = whyUpdateIsUnfit,
    .isFlow = true,
    .examples = "vornadelctl update new.bin\nvornadelctl --path 2-3 update new.bin\n",
};

const Verb kScalarVerb = {
    .name = "scalar",
    .summary = "The unattended update: like update, with the image that config.ini names as FwBin",
    .run = scalarVerb,
    .addOptions = addWriteOptions,
    .whyUnfit = whyDryRunIsUnfit,
    .isFlow = true,
    .examples = "vornadelctl --config line.ini scalar\n",
};

} // namespace vornadel
