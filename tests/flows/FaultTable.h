#pragma once

#include "tests/flows/FlowTable.h"

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace vornadel::test
{

// What one fault does to a flow.

/// One kind of fault with its argument, without its position.
struct FaultVariant {
    const char* name;
    FaultKind kind;
    unsigned amount = 0; ///< bytes programmed, offset of a flip, opens refused or seconds late

    Fault at(unsigned position) const;
};

inline constexpr std::array<FaultVariant, 21> kFaultVariants = {{
    {"Stall", FaultKind::Stall},
    {"VanishBefore", FaultKind::VanishBefore},
    {"VanishAfter", FaultKind::VanishAfter},
    {"Ignore", FaultKind::Ignore},
    {"TornAtOnce", FaultKind::Torn, 0},
    {"TornHalfWay", FaultKind::Torn, 1000},
    {"TornAtTheEnd", FaultKind::Torn, 4095},
    {"FlipFirst", FaultKind::Flip, 0},
    {"FlipMiddle", FaultKind::Flip, 2048},
    {"FlipLast", FaultKind::Flip, 4095},
    {"OneOpenRefused", FaultKind::OpenRefused, 1},
    {"NineteenOpensRefused", FaultKind::OpenRefused, 19},
    {"AllOpensRefused", FaultKind::OpenRefused, 20},
    {"Never", FaultKind::Never},
    {"Late", FaultKind::Late, 3},
    {"JustInTimeForTheRomCode", FaultKind::Late, 20},
    {"TooLateForTheRomCode", FaultKind::Late, 21},
    {"JustInTimeForTheFlashCode", FaultKind::Late, 40},
    {"TooLate", FaultKind::Late, 41},
    {"SameMode", FaultKind::SameMode},
    {"Bounce", FaultKind::Bounce},
}};

/// The indices of the requests that the variant can strike, or the open before it, or the restart
/// that it causes.
std::vector<std::size_t> placesOf(const FaultVariant& variant, const std::string& wire);

/// The position of a fault that strikes at this index.
unsigned positionOf(FaultKind kind, const std::string& wire, std::size_t index);

/// The outcome of a flow with one fault.
struct Outcome {
    std::string wire;          ///< the requests that reach the hub, including the struck one
    std::optional<Step> fails; ///< the step at which the flow fails; unset: it succeeds
};
Outcome outcomeOf(const Flow& flow, HubCode runs, const FaultVariant& variant, std::size_t index);

/// The hub confirms what it has not done, or delivers data that is not in its flash.
bool isDishonest(FaultKind kind);

} // namespace vornadel::test
