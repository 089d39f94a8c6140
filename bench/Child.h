#pragma once

#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace vornadel::bench
{

/// What one start of a watched window cost.
struct StartCost {
    double milliseconds = 0; ///< from before the fork to the first complete picture
    double mebibytes = 0;    ///< most memory ever resident
};

/// Runs a program that was built with FirstPaint.cpp until it has painted. `environment` is added
/// to this program's own. Nothing when it did not say when it painted, or failed.
std::optional<StartCost> runUntilPainted(const std::vector<std::string>& command,
                                         const std::vector<std::string>& environment);

/// A display of our own without a screen.
class VirtualDisplay
{
public:
    VirtualDisplay();
    VirtualDisplay(const VirtualDisplay&) = delete;
    VirtualDisplay& operator=(const VirtualDisplay&) = delete;
    ~VirtualDisplay();

    /// As DISPLAY names it; empty when there is none.
    const std::string& name() const { return m_name; }

private:
    pid_t m_pid = -1;
    std::string m_name;
};

} // namespace vornadel::bench
