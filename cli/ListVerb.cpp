#include "cli/AskedHub.h"
#include "cli/HubChoices.h"
#include "cli/Options.h"
#include "cli/ShownText.h"
#include "cli/Verbs.h"
#include "hub/SupportedIds.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <vector>

namespace vornadel
{

namespace
{

using Rows = std::vector<std::vector<std::string>>;

/// A row for each device on the bus.
Rows allDevices(UsbBus& bus)
{
    const std::unique_ptr<UsbSearch> search = bus.search();
    if (!search) {
        return {};
    }
    Rows rows;
    std::unique_ptr<UsbDevice> device;
    for (auto step = search->next(device); step != UsbSearch::Step::End;
         step = search->next(device)) {
        if (step == UsbSearch::Step::Device) {
            const std::uint16_t vendor = device->vendorId();
            const std::uint16_t product = device->productId();
            rows.push_back({orDash(device->place().own.path), hex4(vendor) + ':' + hex4(product),
                            orDash(printable(device->texts().product))});
            if (FindSupportedId(vendor, product)) {
                rows.back().push_back("supported hub");
            }
        }
    }
    search->release();
    return rows;
}

/// Why a hub did not tell its version.
std::string unanswered(HubFailure failure)
{
    switch (failure) {
    case HubFailure::NoAccess:
        return "no access";
    case HubFailure::Busy:
        return "busy";
    case HubFailure::NoHub:
    case HubFailure::Unplugged:
        return "has left";
    default:
        return "no answer";
    }
}

/// `alone`: there is no other hub.
std::vector<std::string> rowOf(const HubChoice& choice, bool alone)
{
    std::vector<std::string> row = choice.columns();
    if (choice.owner) {
        row.push_back(choice.busyText());
        return row;
    }
    if (!choice.hub.place().known() && !alone) {
        return row; // another hub might answer
    }
    const AskedHub asked = askHub(choice.hub.place());
    row.push_back(asked.failure == HubFailure::None ? asked.version() + "  " + asked.code()
                                                    : unanswered(asked.failure));
    return row;
}

int listVerb(const Command& command)
{
    if (!command.line.all) {
        if (const int status = requireConfiguration(command); status != kExitSuccess) {
            return status;
        }
    }
    const auto hubs = findHubChoices(command.platform.usb);
    if (!hubs) {
        return fail(command, FailureId::NoUsbList, "the USB devices cannot be listed");
    }
    const Rows devices = allDevices(command.platform.usb);
    if (devices.empty() && hubs->empty()) {
        return fail(command, FailureId::NoUsbList,
                    "the system lists no USB device, not even a root hub");
    }
    if (command.line.all) {
        command.out << alignedLines(devices);
        return kExitSuccess;
    }
    Rows rows;
    for (const HubChoice& hub : *hubs) {
        if (isSelected(hub, command.line.hub)) {
            rows.push_back(rowOf(hub, hubs->size() == 1));
        }
    }
    if (rows.empty()) {
        return hubs->empty() ? fail(command, FailureId::NoHub, "no supported hub is attached")
                             : fail(command, FailureId::NoMatch, "no attached hub matches");
    }
    command.out << alignedLines(rows);
    return kExitSuccess;
}

const char* whyListIsUnfit(const CommandLine& line)
{
    return line.all && line.hub.isGiven() ? "list --all lists every device, so no hub can be "
                                            "selected"
                                          : nullptr;
}

void addListOptions(CLI::App& verb, CommandLine& line)
{
    addFlag(verb, "--all", line.all, "List every USB device, and say which are supported hubs");
}

} // namespace

const Verb kListVerb = {
    .name = "list",
    .summary = "List the attached supported hubs",
    .run = listVerb,
    .addOptions = addListOptions,
    .whyUnfit = whyListIsUnfit,
    .examples = "vornadelctl list\nvornadelctl list --all\n",
};

} // namespace vornadel
