#include "cli/HubList.h"

#include "cli/AskedHub.h"
#include "cli/Json.h"
#include "cli/ShownText.h"
#include "cli/Verbs.h"

#include <nlohmann/json.hpp>

#include <optional>
#include <string>

namespace vornadel
{

namespace
{

/// What a hub answers; nothing if it is not asked. `alone`: there is no other hub.
std::optional<AskedHub> askIfSafe(const HubChoice& choice, bool alone)
{
    // Without a place another hub might answer.
    const bool safe = !choice.owner && (choice.hub.place().known() || alone);
    return safe ? std::optional(askHub(choice.hub.place())) : std::nullopt;
}

void show(const Command& command, const std::vector<const HubChoice*>& hubs, bool alone,
          HubCount& count)
{
    Json objects = Json::array();
    std::vector<std::vector<std::string>> rows;
    for (const HubChoice* const hub : hubs) {
        const std::optional<AskedHub> asked = askIfSafe(*hub, alone);
        const bool answered = asked && asked->failure == HubFailure::None;
        ++count.shown;
        count.silent += answered ? 0 : 1;
        objects.push_back(hub->fields());
        objects.back().update(
            {{"version", answered ? Json(asked->version()) : Json()},
             {"running", answered ? Json(romCodeRunsBy(asked->status) ? "rom" : "flash") : Json()},
             {"failure", asked ? orNull(asked->whyNot()) : Json()}});
        rows.push_back(hub->columns());
        if (hub->owner) {
            rows.back().push_back(hub->busyText());
        } else if (asked) {
            rows.back().push_back(answered ? asked->version() + "  " + asked->code()
                                           : asked->whyNot());
        }
    }
    if (command.json()) {
        printObject(command, {{"hubs", objects}});
    } else {
        command.out << alignedLines(rows);
    }
}

} // namespace

int showHubs(const Command& command, const std::vector<HubChoice>& attached, HubCount& count)
{
    std::vector<const HubChoice*> selected;
    for (const HubChoice& hub : attached) {
        if (isSelected(hub, command.line.hub)) {
            selected.push_back(&hub);
        }
    }
    if (selected.empty()) {
        return attached.empty() ? fail(command, FailureId::NoHub, "no supported hub is attached")
                                : fail(command, FailureId::NoMatch, "no attached hub matches");
    }
    show(command, selected, attached.size() == 1, count);
    return kExitSuccess;
}

} // namespace vornadel
