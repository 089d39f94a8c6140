#include "driver/HubDriver.h"

#include "base/GenFun.h"
#include "hub/HubCommands.h"
#include "hub/HubSession.h"
#include "hub/HubTransport.h"
#include "platform/ShellCommand.h"

#include <algorithm>
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

/// Why `cp` must not write to this path; empty if it may.
std::string claim(const std::string& path, bool mayBeFile)
{
    constexpr mode_t kOthersMayWrite = S_IWGRP | S_IWOTH;
    struct stat found {
    };
    if (lstat(path.c_str(), &found) != 0) {
        return path + " cannot be created or examined";
    }
    if (S_ISDIR(found.st_mode) || (mayBeFile && S_ISREG(found.st_mode))) {
        if (found.st_uid != geteuid()) {
            return path + " belongs to another user";
        }
        if (!S_ISDIR(found.st_mode)) {
            return found.st_nlink == 1 ? "" : path + " has a second hard link";
        }
        const mode_t wanted = found.st_mode & 07777 & ~kOthersMayWrite;
        const bool isPrivate = (found.st_mode & kOthersMayWrite) == 0;
        return isPrivate || chmod(path.c_str(), wanted) == 0 ? "" : path + " is writable by others";
    }
    return path + (mayBeFile ? " is neither a folder nor a plain file" : " is not a folder");
}

} // namespace

bool isFitForShell(const std::string& resourcePath)
{
    return std::none_of(resourcePath.begin(), resourcePath.end(),
                        [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; });
}

void copyDriverBundle(Shell& shell, const std::string& resourcePath)
{
    shell.run(formatShellCommand(commandBuffer, "cp -R ", ShellEscape(resourcePath.c_str()),
                                 "/HubUpdaterDriver.kext /tmp"));
}

std::string claimDriverCopy(const std::string& folder)
{
    if (mkdir(folder.c_str(), 0755) == 0) {
        return {}; // in a directory where nobody else may remove or rename it
    }
    std::string problem = claim(folder, false);
    if (!problem.empty()) {
        return problem;
    }
    // A folder is claimed before the iterator enters it.
    std::error_code failed;
    for (std::filesystem::recursive_directory_iterator entry(folder, failed), end;
         !failed && entry != end; entry.increment(failed)) {
        problem = claim(entry->path().string(), true);
        if (!problem.empty()) {
            return problem;
        }
    }
    return failed ? folder + " cannot be searched" : "";
}

bool startScript(PrivilegedRun& privileged, const std::string& resourcePath, const char* name)
{
    return privileged.start(resourcePath + "/" + name);
}

void returnHubToFlash()
{
    const HubSession session;
    if (Hub_OpenRomDevice() && Hub_SwitchMode(HUB_MODE_FLASH)) {
        Hub_CloseDevice(); // a failed switch has already closed it
    }
}

bool needsReboot(bool systemWantsBootArgument, std::string_view bootArguments)
{
    return systemWantsBootArgument &&
           bootArguments.find(kAllowingBootArgument) == std::string_view::npos;
}

} // namespace vornadel
