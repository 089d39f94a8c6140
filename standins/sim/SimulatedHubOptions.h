#pragma once

#include "standins/sim/Fault.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vornadel
{

/// The two kinds of code that the hub can run.
enum class HubCode { Flash, Rom };

/// USB ids of the hub's two devices.
struct SimulatedIds {
    std::uint16_t vendorId = 0x1209;
    std::uint16_t superSpeedId = 0x0001;
    std::uint16_t highSpeedId = 0x0002;
};

/// Real: an erase takes 150 ms, programming 0.7 ms per 256 bytes or part of them, a restart 700 ms.
/// None: they take no time.
enum class SimulatedLatency { Real, None };

/// The configuration of a simulated hub.
struct SimulatedHubOptions {
    std::string image; ///< file that keeps the flash between runs; empty: defaultFlashFile()
    SimulatedLatency latency = SimulatedLatency::Real;
    /// The code it runs first; flash code needs a valid image in the flash.
    HubCode mode = HubCode::Flash;
    std::optional<SimulatedIds> ids; ///< instead of those in the flash
    std::vector<Fault> faults;

    // Not reachable from the command line:
    std::uint8_t restartSpeed = 1; ///< byte 13 of the status block
    bool keepInMemory = false;     ///< no file and no lock
    /// Content for a file that does not exist yet; empty: demoImage().
    std::vector<std::uint8_t> initialFlash;
};

/// Reads `KEY=VALUE,…`; an empty text means all defaults. Values contain no comma.
///
/// | key | value |
/// |---|---|
/// | `image` | the file that keeps the flash |
/// | `latency` | `real` or `none` |
/// | `mode` | `flash` or `rom`, the code the hub runs first |
/// | `ids` | `VID:SSPID:HSPID`, up to four hex digits each |
/// | `fault` | see parseFault(); may be repeated |
///
/// If the text is wrong: false, a sentence in `error`, and `options` unchanged.
bool parseSimulatedHubOptions(std::string_view text, SimulatedHubOptions& options,
                              std::string& error);

} // namespace vornadel
