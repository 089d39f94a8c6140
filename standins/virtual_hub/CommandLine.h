#pragma once

#include "standins/sim/SimulatedHubOptions.h"

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace vornadel
{

inline constexpr std::size_t kMostHubs = 15; ///< as many ports of a speed as one controller of
                                             ///< vhci_hcd has
inline constexpr std::uint16_t kUsbIpPort = 3240;

/// What the user asked for on the command line of vornadel-virtual-hub.
struct VirtualHubCommandLine {
    std::vector<SimulatedHubOptions> hubs;  ///< at least one
    std::optional<std::uint16_t> servePort; ///< set: serve there, 0 for any free port; else attach
};

/// Exit statuses of vornadel-virtual-hub.
inline constexpr int kEndedWell = 0;
inline constexpr int kCouldNot = 1; ///< the reason has been printed
inline constexpr int kBadUsage = 2; ///< the command line was not understood

/// Reads the command line. Nothing when there is something to do; otherwise the exit status, after
/// help, the version or an explanation has been printed.
std::optional<int> parseVirtualHubCommandLine(int argc, const char* const* argv,
                                              VirtualHubCommandLine& commandLine, std::ostream& out,
                                              std::ostream& err);

/// Whether a virtual hub can have this fault. False and a sentence in `error` for a refused open:
/// on a bus nobody opens a hub.
bool faultFitsABus(const Fault& fault, std::string& error);

} // namespace vornadel
