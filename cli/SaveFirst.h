#pragma once

#include "flows/FlowOptions.h"

#include <cstdint>
#include <span>

namespace vornadel
{

struct Command;
struct CommandLine;
struct FlowTarget;

/// What a verb wants the flash to hold.
struct WantedFlash {
    std::span<const std::uint8_t> begin{}; ///< everything behind it is to be blank
    const char* alreadySo = "";            ///< told if it holds that already
};

/// Has a flow save the flash before it changes it, or leave a flash alone that holds what is
/// wanted, as the command line says: sets `beforeChange` of the target's options. `wanted` and
/// `command` must outlive the flow. Returns the exit status; a failure has been told: nothing could
/// be saved.
int saveFirst(const Command& command, FlowTarget& target, const WantedFlash& wanted);

/// Whether the flash begins with the wanted bytes, and is blank behind them.
bool holds(std::span<const std::uint8_t> flash, const WantedFlash& wanted);

bool isBlank(std::span<const std::uint8_t> flash);

} // namespace vornadel
