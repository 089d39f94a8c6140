#include "driver/HubDriver.h"

#include "hub/HubCommands.h"
#include "hub/HubTransport.h"
#include "platform/ShellCommand.h"
#include "props/GenFun.h"

#include <array>

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
    return systemWantsBootArgument && bootArguments.find(kAllowingBootArgument) == std::string_view::npos;
}

} // namespace vornadel
