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

/// The most hubs on one bus.
inline constexpr unsigned kMostSimulatedHubs = 64;

/// The configuration of a simulated hub.
struct SimulatedHubOptions {
    std::string image; ///< file that keeps the flash between runs; empty: defaultFlashFile()
    SimulatedLatency latency = SimulatedLatency::Real;
    /// The code it runs first; flash code needs a valid image in the flash.
    HubCode mode = HubCode::Flash;
    std::optional<SimulatedIds> ids; ///< instead of those in the flash
    std::vector<Fault> faults;

    // Not reachable from the command line:
    unsigned number = 1;           ///< on its bus, and in the serial number of a new flash
    std::uint8_t restartSpeed = 1; ///< byte 13 of the status block
    bool keepInMemory = false;     ///< no file and no lock
    /// Content for a file that does not exist yet; empty: demoImage().
    std::vector<std::uint8_t> initialFlash;
};

/// Reads the options of one hub, `KEY=VALUE,...`; an empty text means all defaults. Values contain
/// no comma.
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

/// Reads the options of a bus: as above, and `hubs=N` for 1 to 64 hubs. A number and a colon before
/// a value of `mode`, `ids` or `fault` say which hub it is for, as in `fault=3:stall@5`. Without a
/// number, a fault is for hub 1, and the others are for every hub that has no value of its own. Hub
/// K from 2 on has `hub-K.bin` for its file if hub 1 has `hub.bin`. Sets `hubs` to one element for
/// each hub.
bool parseSimulatedHubs(std::string_view text, std::vector<SimulatedHubOptions>& hubs,
                        std::string& error);

} // namespace vornadel
