#include "tests/flows/FaultTable.h"

#include <algorithm>
#include <chrono>
#include <string_view>

namespace vornadel::test
{

namespace
{

constexpr std::size_t kBlankPiece = 6; // of the demo image: writing it changes nothing

/// The effect when the hub refuses a request, leaves the bus during it, or confirms it without
/// doing it.
enum class Effect {
    None,
    Fails,     // the step ends here
    Again,     // the request is sent again
    RomUnseen, // the hub counts as running flash code
    RomSeen,   // the hub counts as running ROM code
    NoRom,     // the hub still runs flash code after the restart
    Spoilt,    // the later comparison fails
};

struct RequestRow {
    char request;
    Effect refused;
    Effect gone;
    Effect ignored;
};

constexpr std::array<RequestRow, 11> kRequestRows = {{
    {'o', Effect::None, Effect::Fails, Effect::None},
    {'s', Effect::RomUnseen, Effect::Fails, Effect::RomSeen},
    {'v', Effect::None, Effect::Fails, Effect::None},
    {'m', Effect::Fails, Effect::Fails, Effect::NoRom},
    {'O', Effect::None, Effect::Fails, Effect::None},
    {'S', Effect::Fails, Effect::Fails, Effect::None},
    {'e', Effect::Again, Effect::Fails, Effect::Spoilt},
    {'w', Effect::Fails, Effect::Fails, Effect::Spoilt},
    {'r', Effect::Fails, Effect::Fails, Effect::Spoilt},
    {'f', Effect::Fails, Effect::Fails, Effect::None},
    {'H', Effect::None, Effect::None, Effect::None},
}};

constexpr std::string_view kOpens = "oOH";
constexpr std::string_view kRestarts = "mf";

bool isOneOf(std::string_view letters, char request)
{
    return letters.find(request) != std::string_view::npos;
}

Step stepOf(char request)
{
    switch (request) {
    case 'e':
        return Step::Erase;
    case 'w':
        return Step::Write;
    case 'r':
        return Step::Read;
    case 'f':
    case 'H':
        return Step::Restart;
    default:
        return Step::Open;
    }
}

Effect effectOf(FaultKind kind, char request)
{
    const auto* row =
        std::find_if(kRequestRows.begin(), kRequestRows.end(),
                     [request](const RequestRow& each) { return each.request == request; });
    switch (kind) {
    case FaultKind::Stall:
        return row->refused;
    case FaultKind::Ignore:
        return row->ignored;
    case FaultKind::Flip:
        return Effect::Spoilt;
    case FaultKind::Torn:
        return Effect::Fails;
    case FaultKind::SameMode:
        return request == 'm' ? Effect::NoRom : Effect::None;
    case FaultKind::Never:
        return Effect::Fails;
    case FaultKind::Bounce:
        return Effect::None;
    default:
        return row->gone;
    }
}

/// Opens at the start are tried once, others 20 times. The wait for a restart into ROM code is 20
/// s, for the other 40 s.
Effect effectOfWaiting(const FaultVariant& variant, char request)
{
    unsigned patience = 20;
    if (variant.kind == FaultKind::OpenRefused) {
        patience = request == 'o' ? 0 : 19;
    } else if (request == 'f') {
        patience = 40;
    }
    return variant.amount > patience ? Effect::Fails : Effect::None;
}

/// The `n`-th request of its letter, from 0.
std::size_t ordinal(const std::string& wire, std::size_t index)
{
    const auto end = wire.begin() + static_cast<std::ptrdiff_t>(index);
    return static_cast<std::size_t>(std::count(wire.begin(), end, wire[index]));
}

enum class Strikes { Request, Open, Restart };

Strikes strikes(FaultKind kind)
{
    switch (kind) {
    case FaultKind::OpenRefused:
        return Strikes::Open;
    case FaultKind::Never:
    case FaultKind::Late:
    case FaultKind::SameMode:
    case FaultKind::Bounce:
        return Strikes::Restart;
    default:
        return Strikes::Request;
    }
}

bool happensAt(FaultKind kind, char request)
{
    switch (strikes(kind)) {
    case Strikes::Open:
        return isOneOf(kOpens, request);
    case Strikes::Restart:
        return isOneOf(kRestarts, request);
    case Strikes::Request:
        break;
    }
    return (kind != FaultKind::Torn && kind != FaultKind::Flip) || request == 'w' ||
           (kind == FaultKind::Flip && request == 'r');
}

} // namespace

Fault FaultVariant::at(unsigned position) const
{
    return {.kind = kind,
            .on = {},
            .position = position,
            .amount = amount,
            .delay = std::chrono::seconds(amount)};
}

std::vector<std::size_t> placesOf(const FaultVariant& variant, const std::string& wire)
{
    std::vector<std::size_t> places;
    for (std::size_t index = 0; index < wire.size(); ++index) {
        if (happensAt(variant.kind, wire[index])) {
            places.push_back(index);
        }
    }
    return places;
}

unsigned positionOf(FaultKind kind, const std::string& wire, std::size_t index)
{
    const auto upTo = wire.begin() + static_cast<std::ptrdiff_t>(index) + 1;
    const auto count = [&](std::string_view letters) {
        return static_cast<unsigned>(std::count_if(
            wire.begin(), upTo, [&](char request) { return isOneOf(letters, request); }));
    };
    switch (strikes(kind)) {
    case Strikes::Open:
        return count(kOpens);
    case Strikes::Restart:
        return count(kRestarts);
    case Strikes::Request:
        break;
    }
    return static_cast<unsigned>(index) + 1;
}

Outcome outcomeOf(const Flow& flow, HubCode runs, const FaultVariant& variant, std::size_t index)
{
    const std::string wire = flow.wireFrom(runs);
    const char request = wire[index];
    const std::string head = wire.substr(0, index + 1);
    const std::string tail = wire.substr(index + 1);
    const bool waits = variant.kind == FaultKind::OpenRefused || variant.kind == FaultKind::Late;
    Outcome outcome{wire, std::nullopt};
    switch (waits ? effectOfWaiting(variant, request) : effectOf(variant.kind, request)) {
    case Effect::None:
        break;
    case Effect::Fails:
        outcome = {strikes(variant.kind) == Strikes::Open ? wire.substr(0, index) : head,
                   stepOf(request)};
        break;
    case Effect::Again:
        outcome.wire = head + request + tail;
        break;
    case Effect::RomUnseen: // restarted into ROM code, as a hub in flash code would be anyway
        outcome.wire = runs == HubCode::Flash ? wire : head + "vmOS" + tail;
        break;
    case Effect::RomSeen: // work that a hub in flash code refuses; erasing is tried three times
        if (runs == HubCode::Flash && *flow.work != '\0') {
            outcome = {head + (*flow.work == 'e' ? "eee" : "r"), stepOf(*flow.work)};
        } else if (runs == HubCode::Flash) {
            outcome.wire = head + "fH";
        }
        break;
    case Effect::NoRom:
        outcome = {head + "OS", Step::Open};
        break;
    case Effect::Spoilt:
        if (flow.writes() && !(variant.kind == FaultKind::Ignore && request == 'w' &&
                               ordinal(wire, index) == kBlankPiece)) {
            outcome = {wire.substr(0, wire.size() - 2), Step::Verify};
        }
        break;
    }
    return outcome;
}

bool isDishonest(FaultKind kind)
{
    return kind == FaultKind::Ignore || kind == FaultKind::Flip || kind == FaultKind::SameMode;
}

} // namespace vornadel::test
