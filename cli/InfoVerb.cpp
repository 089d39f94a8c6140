#include "cli/AskedHub.h"
#include "cli/HubChoices.h"
#include "cli/HubList.h"
#include "cli/ImageFile.h"
#include "cli/ImageSource.h"
#include "cli/Json.h"
#include "cli/Options.h"
#include "cli/Outcome.h"
#include "cli/ShownText.h"
#include "cli/Verbs.h"

#include <nlohmann/json.hpp>

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

Json storedField(const std::uint8_t* position)
{
    return position == nullptr ? Json() : Json(hex4(storedNumber(position)));
}

int showImage(const Command& command)
{
    const std::string& path = command.line.image;
    FwImage image;
    if (isStandardInput(path)) {
        if (const int status = loadSource(command, path, image); status != kExitSuccess) {
            return status;
        }
    } else if (!FwImage_LoadFile(image, path)) {
        return failToLoad(command, image, path);
    }
    const auto block = static_cast<unsigned>(image.descriptor - image.data.get());
    if (command.json()) {
        printObject(command, {{"file", path},
                              {"size", image.size},
                              {"block", block},
                              {"version", storedField(image.version)},
                              {"vid", storedField(image.vid)},
                              {"sspid", storedField(image.sspid)},
                              {"hspid", storedField(image.hspid)},
                              {"manufacturer", orNull(image.manufacturer.data())},
                              {"product", orNull(image.product.data())},
                              {"serial", orNull(image.serial.data())},
                              {"containerId", orNull(image.containerIdText.data())}});
        return kExitSuccess;
    }
    command.out << "file:          " << (isStandardInput(path) ? shownSource(path) : path) << '\n'
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
        return fail(command, outcomeOf(asked.failure, {hub->place().text(),
                                                       ownerOf(command.platform.usb, hub->place()),
                                                       accessCommand(command.resourcePath)}));
    }
    if (command.json()) {
        printObject(command, {{"path", hub->place().text()},
                              {"version", asked.version()},
                              {"running", romCodeRunsBy(asked.status) ? "rom" : "flash"}});
        return kExitSuccess;
    }
    command.out << "firmware version: " << asked.version() << '\n'
                << "running:          " << asked.code() << '\n';
    return kExitSuccess;
}

/// One line for each hub that is attached and selected.
int showEveryHub(const Command& command)
{
    if (const int status = requireConfiguration(command); status != kExitSuccess) {
        return status;
    }
    const auto hubs = findHubChoices(command.platform.usb);
    if (!hubs) {
        return fail(command, FailureId::NoUsbList, "the USB devices cannot be listed");
    }
    HubCount count;
    const int status = showHubs(command, *hubs, count);
    return count.silent == 0
               ? status
               : fail(command, {.id = FailureId::SomeFailed,
                                .what = std::to_string(count.silent) + " of " +
                                        std::to_string(count.shown) + " hubs did not answer",
                                .state = "unchanged"});
}

int infoVerb(const Command& command)
{
    if (command.line.all) {
        return showEveryHub(command);
    }
    return command.line.image.empty() ? showHub(command) : showImage(command);
}

const char* whyInfoIsUnfit(const CommandLine& line)
{
    if (line.image.empty()) {
        return nullptr;
    }
    return line.all             ? "info IMAGE asks no hub, so --all does not go with it"
           : line.hub.isGiven() ? "info IMAGE asks no hub, so none can be selected"
                                : nullptr;
}

void addInfoOptions(CLI::App& verb, CommandLine& line)
{
    addOperand(verb, "IMAGE", line.image, Operand::Optional,
               "Firmware image (*.bin); -: from standard input. Without it, show the hub");
    addFlag(verb, "--all", line.all,
            "Show every hub, each in a line as list does; if one does not answer, fail");
}

} // namespace

const Verb kInfoVerb = {
    .name = "info",
    .summary = "Show the attached hub, every hub, or a firmware image",
    .run = infoVerb,
    .addOptions = addInfoOptions,
    .whyUnfit = whyInfoIsUnfit,
    .examples = "vornadelctl info\nvornadelctl info --all\nvornadelctl info new.bin\n",
};

} // namespace vornadel
