#include "cli/Failures.h"

#include "cli/Verbs.h"

#include <algorithm>
#include <iterator>

namespace vornadel
{

namespace
{

constexpr struct {
    FailureId id;
    const char* name;
    int status;
} kKinds[] = {
    {FailureId::Internal, "internal", kExitFailure},
    {FailureId::OutputNotWritten, "output-not-written", kExitFailure},
    {FailureId::Usage, "usage", kExitUsage},
    {FailureId::ConfigUnusable, "config-unusable", kExitUsage},
    {FailureId::ConfigFull, "config-full", kExitUsage},
    {FailureId::SimulatedHub, "simulated-hub", kExitUsage},
    {FailureId::NoUsbList, "no-usb-list", kExitNoHub},
    {FailureId::NoHub, "no-hub", kExitNoHub},
    {FailureId::NoMatch, "no-match", kExitNoHub},
    {FailureId::SeveralHubs, "several-hubs", kExitSeveralHubs},
    {FailureId::PlacesUnknown, "places-unknown", kExitSeveralHubs},
    {FailureId::NoAccess, "no-access", kExitNoAccess},
    {FailureId::Busy, "busy", kExitBusy},
    {FailureId::InUse, "in-use", kExitFailure},
    {FailureId::ImageUnreadable, "image-unreadable", kExitFailure},
    {FailureId::ImageRefused, "image-refused", kExitImageRefused},
    {FailureId::DefinitionsUnusable, "definitions-unusable", kExitUsage},
    {FailureId::Locked, "locked", kExitImageRefused},
    {FailureId::FileNotSaved, "file-not-saved", kExitFailure},
};

const auto& kindOf(FailureId id)
{
    return *std::find_if(std::begin(kKinds), std::end(kKinds),
                         [&](const auto& kind) { return kind.id == id; });
}

} // namespace

int fail(const Command& command, FailureId id, const std::string& what, const std::string& next)
{
    command.result.failure = id;
    command.err << what << '\n' << (next.empty() ? "" : next + '\n') << std::flush;
    return kindOf(id).status;
}

const char* nameOf(FailureId id) { return kindOf(id).name; }

} // namespace vornadel
