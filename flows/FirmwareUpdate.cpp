#include "flows/FirmwareUpdate.h"

#include "flows/Pieces.h"
#include "hub/HubCommands.h"
#include "hub/HubTransport.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>

namespace vornadel
{

namespace
{

/// Percent of the bar that a pass over the whole image fills.
constexpr double kPassPercent = 40;

/// Why a step failed, as shown to the user; null when it succeeded.
using Reason = const char*;

Reason writeAndVerify(const FwImage& image, FlowReporter& reporter)
{
    if (!image.loaded) {
        return "Wrong firmware file\n";
    }
    const auto size = static_cast<std::size_t>(image.size);
    const std::uint8_t* bytes = image.data.get();
    const std::unique_ptr<std::uint8_t[]> readBack(new (std::nothrow) std::uint8_t[size]);
    if (!readBack) {
        return "Wrong firmware file\n"; // no flash is as large as what the memory cannot hold twice
    }
    // A hub that confirms a read and delivers nothing must not be verified against what lay in the
    // memory.
    std::transform(bytes, bytes + size, readBack.get(),
                   [](std::uint8_t byte) { return static_cast<std::uint8_t>(~byte); });
    if (!Hub_OpenRomDevice()) {
        return "Fail To Open Rom Device\nPlease Load Driver firstly\nThen replugin usb hub "
               "device\n";
    }

    reporter.appendProgressInfo_Blue("Erase Flash...\n");
    if (!Hub_EraseFlash()) {
        return "Fail to Erase Flash\n";
    }
    double progress = 10;
    reporter.updateProgressBar(progress, Wait::Yes);

    reporter.appendProgressInfo_Blue("Write Flash...\n");
    if (!forEachPiece(image.size, kPassPercent, progress, reporter,
                      [&](std::uint32_t address, std::size_t length) {
                          return Hub_WriteFlash(address, {bytes + address, length});
                      })) {
        return "Fail to Write Flash\n";
    }

    reporter.appendProgressInfo_Blue("Read Flash...\n");
    if (!forEachPiece(image.size, kPassPercent, progress, reporter,
                      [&](std::uint32_t address, std::size_t length) {
                          return Hub_ReadFlash(address, {readBack.get() + address, length});
                      })) {
        return "Fail to Read Flash\n";
    }

    reporter.appendProgressInfo_Blue("Verify Flash...\n");
    if (std::memcmp(bytes, readBack.get(), size) != 0) {
        return "Fail to verify flash\n";
    }
    reporter.updateProgressBar(progress + 10, Wait::Yes);

    reporter.appendProgressInfo_Blue("Reset to Flash Code...\n");
    if (!Hub_SwitchMode(HUB_MODE_FLASH)) {
        return "Fail to Reset to Flash Code\n";
    }
    return nullptr;
}

} // namespace

bool updateFirmware(const FwImage& image, const std::string& imageName, FlowReporter& reporter)
{
    reporter.resetProgressInfo();
    reporter.updateProgressBar(0, Wait::Yes);
    reporter.appendProgressInfo_Blue("FW:" + imageName + "(size=" + std::to_string(image.size) +
                                     ")\n\n");

    const Reason failure = writeAndVerify(image, reporter);
    if (failure == nullptr) {
        reporter.appendProgressInfo_Blue("Update FW Success\n");
    } else {
        reporter.appendProgressInfo_Red(failure);
        reporter.appendProgressInfo_Red("Update FW Fail\n");
    }
    Hub_CloseDevice();
    return failure == nullptr;
}

} // namespace vornadel
