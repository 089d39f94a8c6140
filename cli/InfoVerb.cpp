#include "cli/AskedHub.h"
#include "cli/HubChoices.h"
#include "cli/ImageFile.h"
#include "cli/Outcome.h"
#include "cli/ShownText.h"
#include "cli/Verbs.h"

#include <cstdint>
#include <string>

namespace vornadel
{

namespace
{

/// A dash for a null position.
std::string storedText(const std::uint8_t* position)
{
    return position == nullptr ? "-" : hex4(storedNumber(position));
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
        << "version:       " << storedText(image.version) << '\n'
        << "VID:           " << storedText(image.vid) << '\n'
        << "SSPID:         " << storedText(image.sspid) << '\n'
        << "HSPID:         " << storedText(image.hspid) << '\n'
        << "manufacturer:  " << printable(image.manufacturer.data()) << '\n'
        << "product:       " << printable(image.product.data()) << '\n'
        << "serial number: " << printable(image.serial.data()) << '\n'
        << "container ID:  " << printable(image.containerIdText.data()) << '\n';
    return kExitSuccess;
}

int showHub(const Command& command)
{
    int status = kExitSuccess;
    const std::optional<AttachedHub> hub = selectHub(command, status);
    if (!hub) {
        return status;
    }
    const AskedHub asked = askHub(hub->place());
    if (asked.failure != HubFailure::None) {
        const Outcome outcome = outcomeOf(
            asked.failure, {hub->place().text(), ownerOf(command.platform.usb, hub->place()),
                            accessCommand(command.resourcePath)});
        command.err << outcome.text << '\n';
        return outcome.status;
    }
    command.out << "firmware version: " << asked.version() << '\n'
                << "running:          " << asked.code() << '\n';
    return kExitSuccess;
}

} // namespace

int infoVerb(const Command& command)
{
    return command.line.image.empty() ? showHub(command)
                                      : showImage(command.line.image, command.out, command.err);
}

} // namespace vornadel
