#include "flows/FlashErase.h"

#include "hub/HubCommands.h"
#include "hub/HubTransport.h"

namespace vornadel
{

namespace
{

/// Why a step failed, as shown to the user; null when it succeeded. Without a line end: the summary
/// brings it.
using Reason = const char*;

Reason eraseAndRestart(FlowReporter& reporter)
{
    reporter.appendProgressInfo_Blue("Open Rom Device...\n");
    if (!Hub_OpenRomDevice()) {
        return "Fail to Open Rom Device";
    }
    reporter.appendProgressInfo_Blue("Erase Flash...\n");
    if (!Hub_EraseFlash()) {
        return "Fail to Erase flash";
    }
    reporter.appendProgressInfo_Blue("Reseting...\n");
    if (!Hub_SwitchMode(HUB_MODE_FLASH)) {
        return "Fail to Reset Flash & Wait";
    }
    return nullptr;
}

} // namespace

bool eraseFlash(FlowReporter& reporter)
{
    reporter.resetProgressInfo();
    reporter.updateProgressBar(0, Wait::Yes);

    const Reason failure = eraseAndRestart(reporter);
    if (failure == nullptr) {
        reporter.appendProgressInfo_Blue("Erase FW Success\n");
    } else {
        reporter.appendProgressInfo_Red(failure);
        reporter.appendProgressInfo_Red("\nErase FW Fail\n");
    }
    Hub_CloseDevice();
    return failure == nullptr;
}

} // namespace vornadel
