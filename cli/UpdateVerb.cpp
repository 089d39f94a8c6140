#include "cli/ConsoleReporter.h"
#include "cli/ImageFile.h"
#include "cli/Verbs.h"
#include "flows/FirmwareUpdate.h"
#include "flows/ScalarUpdate.h"

#include <filesystem>

namespace vornadel
{

namespace
{

int write(const Command& command, const FwImage& image, const std::string& name)
{
    ConsoleReporter reporter(command.out, command.err, command.terminal);
    return updateFirmware(image, name, reporter) ? kExitSuccess : kExitFailure;
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
