#include "cli/HubChoices.h"
#include "cli/HubList.h"
#include "cli/Json.h"
#include "cli/Options.h"
#include "cli/ShownText.h"
#include "cli/Verbs.h"
#include "hub/SupportedIds.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace vornadel
{

namespace
{

/// A device on the bus.
struct BusDevice {
    std::string port; ///< empty if it is not known
    std::uint16_t vendorId;
    std::uint16_t productId;
    std::string product; ///< text
    bool isSupported;
};

std::vector<BusDevice> allDevices(UsbBus& bus)
{
    const std::unique_ptr<UsbSearch> search = bus.search();
    if (!search) {
        return {};
    }
    std::vector<BusDevice> devices;
    std::unique_ptr<UsbDevice> device;
    for (auto step = search->next(device); step != UsbSearch::Step::End;
         step = search->next(device)) {
        if (step == UsbSearch::Step::Device) {
            const std::uint16_t vendor = device->vendorId();
            const std::uint16_t product = device->productId();
            devices.push_back({device->place().own.path, vendor, product, device->texts().product,
                               FindSupportedId(vendor, product)});
        }
    }
    search->release();
    return devices;
}

void showDevices(const Command& command, const std::vector<BusDevice>& devices)
{
    Json objects = Json::array();
    std::vector<std::vector<std::string>> rows;
    for (const BusDevice& each : devices) {
        objects.push_back({{"port", orNull(each.port)},
                           {"vid", hex4(each.vendorId)},
                           {"pid", hex4(each.productId)},
                           {"product", orNull(each.product)},
                           {"supported", each.isSupported}});
        rows.push_back({orDash(each.port), hex4(each.vendorId) + ':' + hex4(each.productId),
                        orDash(printable(each.product))});
        if (each.isSupported) {
            rows.back().push_back("supported hub");
        }
    }
    if (command.json()) {
        printObject(command, {{"devices", objects}});
    } else {
        command.out << alignedLines(rows);
    }
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
    const std::vector<BusDevice> devices = allDevices(command.platform.usb);
    if (devices.empty() && hubs->empty()) {
        return fail(command, FailureId::NoUsbList,
                    "the system lists no USB device, not even a root hub");
    }
    if (command.line.all) {
        showDevices(command, devices);
        return kExitSuccess;
    }
    HubCount count;
    return showHubs(command, *hubs, count);
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
