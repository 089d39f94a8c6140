#include "flows/FlashRead.h"

#include "flows/Pieces.h"
#include "hub/HubCommands.h"
#include "hub/HubTransport.h"

#include <utility>

namespace vornadel
{

namespace
{

/// Percent of the bar that reading the flash fills.
constexpr double kReadPercent = 80;

/// Why a step failed, as shown to the user; null when it succeeded.
using Reason = const char*;

Reason readAndRestart(std::vector<std::uint8_t>& bytes, FlowReporter& reporter)
{
    if (!Hub_OpenRomDevice()) {
        return "Fail to Open Rom Device\nPlease Load Driver firstly\nThen replugin usb hub "
               "device\n";
    }
    double progress = 10;
    reporter.updateProgressBar(progress, Wait::No);

    reporter.appendProgressInfo_Blue("Reading Flash...\n");
    if (!forEachPiece(kFlashSize, kReadPercent, progress, reporter,
                      [&](std::uint32_t address, std::size_t length) {
                          return Hub_ReadFlash(address, {bytes.data() + address, length});
                      })) {
        return "Fail to Read Flash\n";
    }

    reporter.appendProgressInfo_Blue("Reset to Flash Code...\n");
    if (!Hub_SwitchMode(HUB_MODE_FLASH)) {
        return "Fail to Reset to Flash Code\n";
    }
    reporter.updateProgressBar(progress + 10, Wait::No);
    return nullptr;
}

} // namespace

bool readFlash(std::vector<std::uint8_t>& flash, FlowReporter& reporter,
               const std::function<void()>& finished, const std::function<void()>& closed)
{
    std::vector<std::uint8_t> bytes(kFlashSize);
    reporter.updateProgressBar(0, Wait::Yes);
    reporter.resetProgressInfo();
    reporter.appendProgressInfo_Blue("Open Device...\n");

    const Reason failure = readAndRestart(bytes, reporter);
    if (failure == nullptr) {
        reporter.appendProgressInfo_Blue("Read Fw Success\n");
        flash = std::move(bytes);
        if (finished) {
            finished();
        }
    } else {
        reporter.appendProgressInfo_Red(failure);
        reporter.appendProgressInfo_Red("Read Fw Fail\n");
    }
    Hub_CloseDevice();
    if (closed) {
        closed();
    }
    reporter.updateProgressBar(0, Wait::No);
    return failure == nullptr;
}

} // namespace vornadel
