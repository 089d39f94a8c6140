#pragma once

#include "cli/HubSelector.h"
#include "cli/Json.h"
#include "hub/AttachedHubs.h"

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace vornadel
{

struct Command;

/// A hub that a command could work on: one on the bus, or one that another flow is restarting.
struct HubChoice {
    AttachedHub hub{};                 ///< without halves while it is away
    std::optional<PlaceOwner> owner{}; ///< who works on it

    bool isAway() const { return hub.halves.empty(); }
    std::string place() const; ///< as UsbPlace::text() writes it; "-" if it is not known
    /// "busy (pid 1234)"
    std::string busyText() const;
    /// The same for programs: null for what is not known.
    Json fields() const;
    /// Place, ids, serial number and product text, cleaned; "-" for what is not known.
    std::vector<std::string> columns() const;
};

/// Nothing if the platform gives no list.
std::optional<std::vector<HubChoice>> findHubChoices(UsbBus& bus);

/// Whether a hub is, or could be, the selected one. Of a hub that is away only the place is known.
/// Does not ask a hub that somebody works on for its Container ID.
bool isSelected(const HubChoice& choice, const HubSelector& selector);

/// The process that has locked a place; 0 if nobody has, or if the process is not known.
std::int64_t ownerOf(UsbBus& bus, const UsbPlace& place);

/// Whether the configuration names hubs; otherwise the exit status, after the reason was told.
int requireConfiguration(const Command& command);

/// The one hub that the command line selects. Otherwise nothing, the exit status in `status`, and
/// the reason on standard error. Sends no vendor request to any hub.
std::optional<AttachedHub> selectHub(const Command& command, int& status);

} // namespace vornadel
