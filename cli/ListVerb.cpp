#include "cli/AskedHub.h"
#include "cli/HubChoices.h"
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

} // namespace

int listVerb(const Command& command)
{
    const auto hubs = findHubChoices(command.platform.usb);
    if (!hubs) {
        command.err << "the USB devices cannot be listed\n";
        return kExitNoHub;
    }
    const Rows devices = allDevices(command.platform.usb);
    if (devices.empty() && hubs->empty()) {
        command.err << "the system lists no USB device, not even a root hub\n";
        return kExitNoHub;
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
        command.err << (hubs->empty() ? "no supported hub is attached\n"
                                      : "no attached hub matches\n");
        return kExitNoHub;
    }
    command.out << alignedLines(rows);
    return kExitSuccess;
}

} // namespace vornadel
