#include "cli/ImageFile.h"
#include "cli/ShownText.h"
#include "cli/Verbs.h"
#include "hub/HubCommands.h"
#include "hub/HubTransport.h"

#include <cstdint>
#include <string>

namespace vornadel
{

namespace
{

/// Two stored bytes, high byte first; a dash for a null position.
std::string storedNumber(const std::uint8_t* position)
{
    return position == nullptr ? "-" : hex4(static_cast<unsigned>(position[0] << 8 | position[1]));
}

int showImage(const std::string& path, std::ostream& out, std::ostream& err)
{
    FwImage image;
    if (!loadImage(image, path, err)) {
        if (image.data != nullptr) {
            err << path << ": Firmware format error\n";
        }
        return kExitFailure;
    }
    const auto block = static_cast<unsigned>(image.descriptor - image.data.get());
    out << "file:          " << path << '\n'
        << "size:          " << image.size << " bytes\n"
        << "block at:      0x" << hex4(block) << '\n'
        << "version:       " << storedNumber(image.version) << '\n'
        << "VID:           " << storedNumber(image.vid) << '\n'
        << "SSPID:         " << storedNumber(image.sspid) << '\n'
        << "HSPID:         " << storedNumber(image.hspid) << '\n'
        << "manufacturer:  " << printable(image.manufacturer.data()) << '\n'
        << "product:       " << printable(image.product.data()) << '\n'
        << "serial number: " << printable(image.serial.data()) << '\n'
        << "container ID:  " << printable(image.containerIdText.data()) << '\n';
    return kExitSuccess;
}

const char* whyNotOpened(UsbOpenStatus status)
{
    switch (status) {
    case UsbOpenStatus::NoAccess:
        return "permission is missing";
    case UsbOpenStatus::Busy:
        return "another program has it open";
    case UsbOpenStatus::Gone:
        return "it has just left";
    default:
        return "the system gave no reason";
    }
}

int showHub(std::ostream& out, std::ostream& err)
{
    if (!Hub_FindDevice()) {
        err << "no supported hub is attached\n";
        return kExitFailure;
    }
    if (!Hub_OpenDevice()) {
        err << "a supported hub is attached, but it cannot be opened: "
            << whyNotOpened(Hub_LastOpenStatus()) << '\n';
        return kExitFailure;
    }
    HubStatusBlock status{};
    const bool read = Hub_ReadStatusBlock(status) == 0;
    Hub_CloseDevice();
    if (!read) {
        err << "the hub was opened, but it does not answer\n";
        return kExitFailure;
    }
    out << "firmware version: " << hex4(firmwareVersionIn(status)) << '\n'
        << "running:          " << (romCodeRunsBy(status) ? "ROM code" : "flash code") << '\n';
    return kExitSuccess;
}

} // namespace

int infoVerb(const Command& command)
{
    return command.line.image.empty() ? showHub(command.out, command.err)
                                      : showImage(command.line.image, command.out, command.err);
}

} // namespace vornadel
