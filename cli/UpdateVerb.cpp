#include "cli/ConsoleReporter.h"
#include "cli/FlowTarget.h"
#include "cli/ImageFile.h"
#include "cli/ShownText.h"
#include "cli/Verbs.h"
#include "flows/FirmwareUpdate.h"
#include "flows/ScalarUpdate.h"
#include "hub/SupportedIds.h"

#include <cstdint>
#include <filesystem>
#include <utility>

namespace vornadel
{

namespace
{

/// Makes sure that the hub is found with the ids in the image.
bool supportIds(const Command& command, const FwImage& image)
{
    const std::uint16_t vendor = storedNumber(image.vid);
    const std::uint16_t superSpeed = storedNumber(image.sspid);
    const std::uint16_t highSpeed = storedNumber(image.hspid);
    if (FindSupportedId(vendor, superSpeed) && FindSupportedId(vendor, highSpeed)) {
        return true;
    }
    const std::string ids = hex4(vendor) + ':' + hex4(superSpeed) + '/' + hex4(highSpeed);
    if (!AddSupportedIds(vendor, superSpeed, highSpeed)) {
        command.err << command.configFile << " has no room for the ids in the image, " << ids
                    << "; remove a hub from it\n";
        return false;
    }
    command.out << "the image gives the hub new ids, " << ids
                << "; they are supported until this command ends\n"
                << std::flush;
    return true;
}

int write(const Command& command, const FwImage& image, const std::string& name)
{
    ConsoleReporter reporter(command.out, command.err, command.terminal, command.stop);
    FlowTarget target;
    if (image.loaded) {
        if (const std::string why = whyRefused(image); !why.empty()) {
            command.err << name << ": " << why << '\n';
            return kExitImageRefused;
        }
        int status = kExitSuccess;
        std::optional<FlowTarget> chosen = chooseTarget(command, status);
        if (!chosen) {
            return status;
        }
        target = *std::move(chosen);
        // After the choice, so that a device with these ids is no hub to choose from.
        if (!supportIds(command, image)) {
            return kExitUsage;
        }
    }
    updateFirmware(image, name, reporter, target.options); // says so if the image is not loaded
    return explainResult(command, FlowKind::Update, reporter.result(), target);
}

/// The image that the configuration names. It lies beside the configuration file.
void loadScalarImage(const Command& command, FwImage& image)
{
    const std::filesystem::path beside = std::filesystem::path(command.configFile).parent_path();
    const std::string folder = beside.empty() ? "." : beside.string();
    const std::string& name = command.config.fwbinPath;
    if (name.empty()) {
        if (command.config.problem.empty()) { // otherwise that has been told
            command.err << command.configFile << ": FwBin names no image\n";
        }
    } else if (!loadConfiguredImage(image, folder, name)) {
        const std::string path = folder + '/' + name;
        command.err << path << ": " << whyUnread(path) << '\n';
    }
}

} // namespace

int updateVerb(const Command& command)
{
    FwImage image;
    loadImage(image, command.line.image, command.err);
    return write(command, image, command.line.image);
}

int scalarVerb(const Command& command)
{
    FwImage image;
    loadScalarImage(command, image);
    return write(command, image, command.config.fwbinPath);
}

} // namespace vornadel
