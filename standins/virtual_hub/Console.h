#pragma once

#include "standins/virtual_hub/VirtualHub.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vornadel
{

/// Executes the commands from standard input.
///
/// | command | does |
/// |---|---|
/// | `plug [N]` | plugs hub N in, running flash code |
/// | `plug-rom [N]` | plugs it in, running ROM code; an error while it is plugged in |
/// | `unplug [N]` | unplugs it |
/// | `fault FAULT [N]` | adds a fault, see parseFault() |
/// | `status [N]` | `ok code=flash superspeed=3-1 high-speed=2-1 requests=0 faults=0` |
/// | `quit` | ends the program |
///
/// N counts the hubs from 1, which is the default. The status shows `-` for a half off the bus.
class Console
{
public:
    explicit Console(std::vector<std::unique_ptr<VirtualHub>>& hubs) : m_hubs(hubs) {}

    /// Executes one line and returns `ok`, or `error: ` and the reason. A plug or unplug is
    /// complete when this returns.
    std::string answer(std::string_view line);
    bool quit() const { return m_quit; } ///< whether `quit` was given

private:
    struct CommandRow;

    std::string plug(VirtualHub& hub, const std::string& argument);
    std::string plugRom(VirtualHub& hub, const std::string& argument);
    std::string unplug(VirtualHub& hub, const std::string& argument);
    std::string addFault(VirtualHub& hub, const std::string& argument);
    std::string status(VirtualHub& hub, const std::string& argument);
    VirtualHub* hubNumbered(const std::string& number);

    std::vector<std::unique_ptr<VirtualHub>>& m_hubs;
    bool m_quit = false;
};

} // namespace vornadel
