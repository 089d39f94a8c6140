#pragma once

#include "standins/sim/SimulatedHubOptions.h"

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace vornadel
{

inline constexpr std::size_t kMostHubs = 64; ///< each takes a pair of vhci_hcd ports
inline constexpr std::uint16_t kUsbIpPort = 3240;

/// The parsed command line of vornadel-virtual-hub.
struct VirtualHubCommandLine {
    std::vector<SimulatedHubOptions> hubs;  ///< at least one
    std::optional<std::uint16_t> servePort; ///< where to serve, 0 for any free port; unset: attach
};

/// Exit statuses of vornadel-virtual-hub.
inline constexpr int kEndedWell = 0;
inline constexpr int kCouldNot = 1; ///< the reason has been printed
inline constexpr int kBadUsage = 2; ///< the command line is wrong

/// Parses the command line. Empty if there is something to do; otherwise the exit status, after
/// help, the version or an error has been printed.
std::optional<int> parseVirtualHubCommandLine(int argc, const char* const* argv,
                                              VirtualHubCommandLine& commandLine, std::ostream& out,
                                              std::ostream& err);

/// Whether a virtual hub can have this fault. False and a sentence in `error` for a refused open,
/// because a hub on a bus does not see opens.
bool faultFitsABus(const Fault& fault, std::string& error);

} // namespace vornadel
