// The options of the simulated hub and the faults among them. An input is the text.

#include "standins/sim/SimulatedHubOptions.h"
#include "tests/fuzz/FuzzInput.h"

#include <algorithm>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace vornadel::test
{

namespace
{

bool sameFault(const Fault& a, const Fault& b)
{
    return a.kind == b.kind && a.on == b.on && a.position == b.position && a.amount == b.amount &&
           a.delay == b.delay;
}

std::vector<std::string> piecesOf(const std::string& text)
{
    std::vector<std::string> pieces;
    std::size_t from = 0;
    for (std::size_t comma = text.find(','); comma != std::string::npos;
         comma = text.find(',', from)) {
        pieces.push_back(text.substr(from, comma - from));
        from = comma + 1;
    }
    pieces.push_back(text.substr(from));
    return pieces;
}

bool sameHub(const SimulatedHubOptions& a, const SimulatedHubOptions& b)
{
    return a.image == b.image && a.latency == b.latency && a.mode == b.mode &&
           a.ids.has_value() == b.ids.has_value() &&
           std::equal(a.faults.begin(), a.faults.end(), b.faults.begin(), b.faults.end(),
                      sameFault);
}

/// The same text for a whole bus. `one` is what it says of one hub, if it is right for one.
void requireHubs(const std::string& text, const SimulatedHubOptions* one)
{
    std::vector<SimulatedHubOptions> hubs(kMostSimulatedHubs + 1);
    std::string error;
    if (!parseSimulatedHubs(text, hubs, error)) {
        require(!error.empty() && hubs.size() > kMostSimulatedHubs && one == nullptr,
                "what is refused is told, changes nothing, and is wrong for one hub too");
        return;
    }
    require(error.empty() && !hubs.empty() && hubs.size() <= kMostSimulatedHubs,
            "there is a hub, and not too many");
    require(one == nullptr || (hubs.size() == 1 && sameHub(hubs.front(), *one)),
            "what is right for one hub gives one");
    std::set<std::string> files;
    for (const SimulatedHubOptions& hub : hubs) {
        require(hub.latency == hubs.front().latency, "all hubs have the same latency");
        files.insert(hub.image);
    }
    require(files.size() == hubs.size() || files == std::set<std::string>{""},
            "each hub has its own file");
}

/// What the pieces say one by one. False when one of them is wrong, or a key that may not be
/// repeated is.
bool pieceByPiece(const std::string& text, SimulatedHubOptions& options)
{
    std::set<std::string> keys;
    for (const std::string& piece : piecesOf(text)) {
        SimulatedHubOptions alone;
        std::string error;
        const std::string key = piece.substr(0, piece.find('='));
        if (piece.empty() || !parseSimulatedHubOptions(piece, alone, error) ||
            (!keys.insert(key).second && key != "fault")) {
            return false;
        }
        options.image = key == "image" ? alone.image : options.image;
        options.latency = key == "latency" ? alone.latency : options.latency;
        options.mode = key == "mode" ? alone.mode : options.mode;
        options.ids = key == "ids" ? alone.ids : options.ids;
        options.faults.insert(options.faults.end(), alone.faults.begin(), alone.faults.end());
    }
    return true;
}

void requireFault(std::string_view text)
{
    Fault fault;
    fault.position = 77;
    std::string error;
    if (!parseFault(text, fault, error)) {
        require(!error.empty() && fault.position == 77 && fault.kind == Fault{}.kind,
                "a fault that is refused is told, and leaves everything as it was");
        return;
    }
    Fault again;
    require(parseFault(text, again, error) && sameFault(fault, again),
            "a text is the same fault each time");
    require(fault.kind == FaultKind::Late || fault.kind == FaultKind::Refused ||
                fault.delay == Clock::Duration::zero(),
            "only a late return and refused opens take time");
    require(!fault.on || fault.position > 0 || fault.kind == FaultKind::Torn,
            "a fault of one kind of request has a position");
    require(fault.delay >= Clock::Duration::zero(), "nothing returns before it left");
}

} // namespace

} // namespace vornadel::test

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace vornadel;
    using namespace vornadel::test;
    const std::string text(data, data + size);
    for (const std::string& piece : piecesOf(text)) {
        requireFault(piece);
    }

    SimulatedHubOptions options;
    std::string error;
    const bool fitsOne = parseSimulatedHubOptions(text, options, error);
    requireHubs(text, fitsOne ? &options : nullptr);

    options = {};
    options.image = "before";
    SimulatedHubOptions plain = options;
    if (!parseSimulatedHubOptions(text, options, error)) {
        require(!error.empty() && options.image == "before" && options.faults.empty(),
                "what is refused is told, and leaves everything as it was");
        require(!pieceByPiece(text, plain), "what is right piece by piece is right");
        return 0;
    }
    require(error.empty(), "no reason without a refusal");
    if (text.empty()) {
        return 0;
    }
    require(pieceByPiece(text, plain), "each piece is right by itself");
    require(options.image == plain.image && options.latency == plain.latency &&
                options.mode == plain.mode && options.ids.has_value() == plain.ids.has_value(),
            "the pieces add up");
    require(!options.ids || (options.ids->vendorId == plain.ids->vendorId &&
                             options.ids->superSpeedId == plain.ids->superSpeedId &&
                             options.ids->highSpeedId == plain.ids->highSpeedId),
            "the ids too");
    require(std::equal(options.faults.begin(), options.faults.end(), plain.faults.begin(),
                       plain.faults.end(), sameFault),
            "and the faults, in their order");
    return 0;
}
