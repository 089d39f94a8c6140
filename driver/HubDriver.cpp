#include "driver/HubDriver.h"

#include "base/GenFun.h"
#include "hub/HubCommands.h"
#include "hub/HubTransport.h"
#include "platform/ShellCommand.h"

#include <array>
#include <filesystem>
#include <system_error>

#include <sys/stat.h>
#include <unistd.h>

namespace vornadel
{

namespace
{

constexpr std::string_view kAllowingBootArgument = "kext-dev-mode=1";

std::array<char, 512> commandBuffer;

} // namespace

void copyDriverBundle(Shell& shell, const std::string& resourcePath)
{
    runShellCommand(shell, commandBuffer, "cp -R ", ShellEscape(resourcePath.c_str()),
                    "/HubUpdaterDriver.kext /tmp");
}

bool claimDriverCopy(const std::string& folder)
{
    if (mkdir(folder.c_str(), 0755) == 0) {
        return true; // in a directory where nobody else may remove or rename it
    }
    const auto isOwn = [](const std::string& path, bool mayBeFile) {
        struct stat found {
        };
        return lstat(path.c_str(), &found) == 0 && found.st_uid == geteuid() &&
               (found.st_mode & (S_IWGRP | S_IWOTH)) == 0 &&
               (S_ISDIR(found.st_mode) ||
                (mayBeFile && S_ISREG(found.st_mode) && found.st_nlink == 1));
    };
    if (!isOwn(folder, false)) {
        return false;
    }
    std::error_code failed;
    for (std::filesystem::recursive_directory_iterator entry(folder, failed), end;
         !failed && entry != end; entry.increment(failed)) {
        if (!isOwn(entry->path().string(), true)) {
            return false;
        }
    }
    return !failed;
}

bool startScript(PrivilegedRun& privileged, const std::string& resourcePath, const char* name)
{
    return privileged.start(resourcePath + "/" + name);
}

void returnHubToFlash()
{
    if (Hub_OpenRomDevice() && Hub_SwitchMode(HUB_MODE_FLASH)) {
        Hub_CloseDevice(); // a switch that failed has closed it already
    }
}

bool needsReboot(bool systemWantsBootArgument, std::string_view bootArguments)
{
    return systemWantsBootArgument &&
           bootArguments.find(kAllowingBootArgument) == std::string_view::npos;
}

} // namespace vornadel
