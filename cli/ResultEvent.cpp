#include "cli/ResultEvent.h"

#include "cli/CommandLine.h"
#include "cli/Failures.h"
#include "cli/ShownText.h"

#include <nlohmann/json.hpp>

#include <chrono>

namespace vornadel
{

namespace
{

const char* nameOf(FlashState state)
{
    switch (state) {
    case FlashState::Untouched:
        return "untouched";
    case FlashState::Erased:
        return "erased";
    case FlashState::Incomplete:
        return "incomplete";
    case FlashState::Written:
        return "written";
    case FlashState::Verified:
        return "verified";
    }
    return "";
}

const char* nameOf(HubState state)
{
    switch (state) {
    case HubState::Unknown:
        break;
    case HubState::Flash:
        return "flash";
    case HubState::Rom:
        return "rom";
    case HubState::Absent:
        return "absent";
    }
    return "";
}

} // namespace

Json resultFields(const CommandResult& result, int status, Clock::Duration took)
{
    const bool succeeded = status == kExitSuccess;
    const auto& failure = result.failure;
    const FlowResult flow = result.flow.value_or(FlowResult());
    const bool told = !succeeded && failure;
    Json fields = {
        {"ok", succeeded},
        {"exit", status},
        {"id", told ? Json(kindOf(failure->id).name) : Json()},
        {"changed", flow.changed},
        {"flash", nameOf(flow.flash)},
        {"hub", flow.hub == HubState::Unknown ? Json() : Json(nameOf(flow.hub))},
        {"version", flow.version ? Json(hex4(*flow.version)) : Json()},
        {"serial", orNull(flow.serialNumber)},
        {"backup", orNull(result.backup)},
        {"ms", std::chrono::duration_cast<std::chrono::milliseconds>(took).count()},
        {"next", told ? orNull(failure->next) : Json()},
    };
    if (result.differences != nullptr) {
        fields["differences"] = *result.differences;
    }
    return fields;
}

} // namespace vornadel
