#pragma once

#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace vornadel::bench
{

/// The cost of one start of a watched window.
struct StartCost {
    double milliseconds = 0; ///< from before the fork to the first complete picture
    double mebibytes = 0;    ///< most memory ever resident
};

/// Runs a program that was built with FirstPaint.cpp until it has painted, with `environment` added
/// to this program's own. Empty when it failed or did not report the moment.
std::optional<StartCost> runUntilPainted(const std::vector<std::string>& command,
                                         const std::vector<std::string>& environment);

/// An X server of our own, without a screen.
class VirtualDisplay
{
public:
    VirtualDisplay();
    VirtualDisplay(const VirtualDisplay&) = delete;
    VirtualDisplay& operator=(const VirtualDisplay&) = delete;
    ~VirtualDisplay();

    /// The value for DISPLAY; empty when the server did not start.
    const std::string& name() const { return m_name; }

private:
    pid_t m_pid = -1;
    std::string m_name;
};

} // namespace vornadel::bench
