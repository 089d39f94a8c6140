#include "cli/AskedHub.h"

#include "cli/ShownText.h"
#include "hub/HubSession.h"
#include "hub/HubTransport.h"

namespace vornadel
{

std::string AskedHub::version() const { return hex4(firmwareVersionIn(status)); }

std::string AskedHub::code() const { return romCodeRunsBy(status) ? "ROM code" : "flash code"; }

std::string AskedHub::whyNot() const
{
    switch (failure) {
    case HubFailure::None:
        return {};
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

AskedHub askHub(const UsbPlace& place)
{
    AskedHub asked;
    const HubSession session({.place = place, .strict = true, .locks = false});
    if (!Hub_OpenDevice()) {
        asked.failure = Hub_LastFailure();
        return asked;
    }
    if (Hub_ReadStatusBlock(asked.status) != 0) {
        asked.failure = Hub_LastFailure();
    }
    Hub_CloseDevice();
    return asked;
}

} // namespace vornadel
