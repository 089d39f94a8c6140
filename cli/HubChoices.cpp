#include "cli/HubChoices.h"

#include "cli/NextCommand.h"
#include "cli/Outcome.h"
#include "cli/ShownText.h"
#include "cli/Verbs.h"
#include "hub/SupportedIds.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <iterator>
#include <utility>

namespace vornadel
{

namespace
{

std::string idText(std::uint16_t productId) { return productId == 0 ? "-" : hex4(productId); }

/// A place as UsbPlace::text() has written it. A single port counts as both.
UsbPlace placeIn(const std::string& text)
{
    const std::size_t slash = text.find('/');
    UsbPlace place;
    place.own.path = text.substr(0, slash);
    place.other.path = text.substr(slash + 1); // from the beginning if there is none
    return place;
}

bool isOwned(const UsbPlace& place, const PlaceOwner& owner)
{
    return place.isSameConnector(placeIn(owner.place));
}

/// Whether some half of the hub fits. They tell different places where the system does not know
/// which two ports are one connector.
template <typename Fits>
bool hasHalf(const AttachedHub& hub, Fits fits)
{
    return std::any_of(hub.halves.begin(), hub.halves.end(),
                       [&](const auto& half) { return fits(*half); });
}

bool hasId(const AttachedHub& hub, const UsbIds& ids)
{
    return hub.vendorId == ids.vendor && ids.product != 0 &&
           (hub.superSpeedId == ids.product || hub.highSpeedId == ids.product);
}

bool hasContainerId(const AttachedHub& hub, const std::string& containerId)
{
    return hasHalf(hub, [&](UsbDevice& half) { return half.containerId() == containerId; });
}

/// A sentence and the choices, without the last line end.
std::string withChoices(const std::string& sentence, const std::vector<HubChoice>& choices)
{
    std::vector<std::vector<std::string>> rows;
    for (const HubChoice& choice : choices) {
        rows.push_back(choice.columns());
        if (choice.owner) {
            rows.back().push_back(choice.busyText());
        }
    }
    std::string text = sentence + '\n' + alignedLines(rows);
    text.pop_back();
    return text;
}

/// The hub that somebody has locked; null if it is not among the choices.
HubChoice* choiceAt(const PlaceOwner& owner, std::vector<HubChoice>& choices)
{
    const auto found = std::find_if(choices.begin(), choices.end(), [&](const HubChoice& choice) {
        return choice.isAway() ? choice.owner->place == owner.place
                               : hasHalf(choice.hub, [&](const UsbDevice& half) {
                                     return isOwned(half.place(), owner);
                                 });
    });
    return found == choices.end() ? nullptr : &*found;
}

/// Whether these are the ids of a supported hub, as far as known.
bool mayBeSupported(UsbIds ids)
{
    return ids == UsbIds() || FindSupportedId(ids.vendor, ids.product);
}

/// The exit status if there is not one selected hub that is free; the reason has been told then.
int judge(const Command& command, const std::vector<HubChoice>& selected,
          const std::vector<HubChoice>& others)
{
    if (selected.empty() && others.empty()) {
        return fail(command, FailureId::NoHub, "no supported hub is attached");
    }
    if (selected.empty()) {
        return fail(command, FailureId::NoMatch,
                    withChoices("no attached hub matches; these are attached:", others));
    }
    if (selected.size() > 1) {
        const char* const several = command.line.hub.isGiven()
                                        ? "several attached hubs match"
                                        : "several supported hubs are attached";
        return fail(
            command, FailureId::SeveralHubs,
            withChoices(several + std::string("; choose one, for example with --path:"), selected),
            commandAgain(command, selected.front().place()));
    }
    const HubChoice& choice = selected.front();
    if (choice.owner) {
        command.result.place = choice.place();
        return fail(command, FailureId::Busy,
                    choice.place() + " is " + busySentence(choice.owner->processId));
    }
    if (!choice.hub.place().known() && !others.empty()) {
        return fail(command, FailureId::PlacesUnknown,
                    "several supported hubs are attached, and the system does not tell where; "
                    "attach only one");
    }
    command.result.place = choice.place();
    return kExitSuccess;
}

} // namespace

std::string HubChoice::place() const
{
    return orDash(isAway() ? owner->place : hub.place().text());
}

std::string HubChoice::busyText() const
{
    return owner->processId == 0 ? "busy" : "busy (pid " + std::to_string(owner->processId) + ')';
}

std::vector<std::string> HubChoice::columns() const
{
    if (isAway()) {
        return {place(), "-", "-", "-"};
    }
    const UsbTexts texts = hub.texts();
    return {place(),
            hex4(hub.vendorId) + ':' + idText(hub.superSpeedId) + '/' + idText(hub.highSpeedId),
            orDash(printable(texts.serialNumber)), orDash(printable(texts.product))};
}

Json HubChoice::fields() const
{
    const UsbTexts texts = isAway() ? UsbTexts() : hub.texts();
    const auto id = [&](std::uint16_t number) { return number == 0 ? Json() : Json(hex4(number)); };
    return {{"path", place() == "-" ? Json() : Json(place())},
            {"vid", id(hub.vendorId)},
            {"sspid", id(hub.superSpeedId)},
            {"hspid", id(hub.highSpeedId)},
            {"serial", orNull(texts.serialNumber)},
            {"product", orNull(texts.product)},
            {"busy", owner.has_value()},
            {"pid", owner && owner->processId != 0 ? Json(owner->processId) : Json()}};
}

std::optional<std::vector<HubChoice>> findHubChoices(UsbBus& bus)
{
    // The locks twice: between them and the list, a flow may lock a hub and restart it, or a hub
    // may come back and its flow end.
    const std::vector<PlaceOwner> ownersBefore = bus.placeLocks().owners();
    std::optional<std::vector<AttachedHub>> hubs = Hub_ListHubs(bus);
    if (!hubs) {
        return {};
    }
    std::vector<HubChoice> choices;
    for (AttachedHub& hub : *hubs) {
        choices.push_back({std::move(hub), {}});
    }
    for (const PlaceOwner& owner : bus.placeLocks().owners()) {
        if (HubChoice* const choice = choiceAt(owner, choices)) {
            choice->owner = owner;
        } else if (mayBeSupported(owner.ids)) {
            choices.push_back({{}, owner});
        }
    }
    for (const PlaceOwner& owner : ownersBefore) {
        if (choiceAt(owner, choices) == nullptr && mayBeSupported(owner.ids)) {
            choices.push_back({{}, owner});
        }
    }
    return choices;
}

bool isSelected(const HubChoice& choice, const HubSelector& selector)
{
    if (choice.isAway()) {
        // A serial number or a Container ID means one hub, which can be told when it is back.
        return selector.serialNumber.empty() && selector.containerId.empty() &&
               (selector.path.empty() || placeIn(choice.owner->place).isCalled(selector.path));
    }
    const AttachedHub& hub = choice.hub;
    if (!selector.path.empty() && !hasHalf(hub, [&](const UsbDevice& half) {
            return half.place().isCalled(selector.path);
        })) {
        return false;
    }
    if (selector.id && !hasId(hub, *selector.id)) {
        return false;
    }
    if (!selector.serialNumber.empty() && hub.texts().serialNumber != selector.serialNumber) {
        return false;
    }
    return selector.containerId.empty() ||
           (!choice.owner && hasContainerId(hub, selector.containerId));
}

std::int64_t ownerOf(UsbBus& bus, const UsbPlace& place)
{
    for (const PlaceOwner& owner : bus.placeLocks().owners()) {
        if (isOwned(place, owner)) {
            return owner.processId;
        }
    }
    return 0;
}

int requireConfiguration(const Command& command)
{
    if (!command.config.problem.empty()) {
        return fail(command, FailureId::ConfigUnusable,
                    "the configuration cannot be used: " + command.config.problem);
    }
    if (std::none_of(SupportedIdList.begin(), SupportedIdList.end(),
                     [](const SupportedIdEntry& row) { return row.valid != 0; })) {
        return fail(command, FailureId::ConfigUnusable,
                    command.configFile + " names no supported hub");
    }
    return kExitSuccess;
}

std::optional<AttachedHub> selectHub(const Command& command, int& status)
{
    if (status = requireConfiguration(command); status != kExitSuccess) {
        return {};
    }
    std::optional<std::vector<HubChoice>> attached = findHubChoices(command.platform.usb);
    if (!attached) {
        status = fail(command, FailureId::NoUsbList, "the USB devices cannot be listed");
        return {};
    }
    const auto firstSelected =
        std::stable_partition(attached->begin(), attached->end(), [&](const HubChoice& choice) {
            return !isSelected(choice, command.line.hub);
        });
    std::vector<HubChoice> selected(std::make_move_iterator(firstSelected),
                                    std::make_move_iterator(attached->end()));
    attached->erase(firstSelected, attached->end());
    status = judge(command, selected, *attached);
    if (status != kExitSuccess) {
        return {};
    }
    return std::move(selected.front().hub);
}

} // namespace vornadel
