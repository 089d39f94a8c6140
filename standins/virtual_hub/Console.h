#pragma once

#include "standins/virtual_hub/VirtualHub.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vornadel
{

/// The commands that standard input takes.
///
/// | command | does |
/// |---|---|
/// | `plug [N]` | plugs hub N in, running flash code |
/// | `plug-rom [N]` | plugs it in, running ROM code; an error while it is plugged in |
/// | `unplug [N]` | unplugs it |
/// | `fault FAULT [N]` | adds a fault, see parseFault() |
/// | `status [N]` | `ok code=flash superspeed=3-1 high-speed=2-1 requests=0 faults=0`; `-` for a
/// half that is away | | `quit` | ends the program |
///
/// N counts the hubs from 1, which is the default.
class Console
{
public:
    explicit Console(std::vector<std::unique_ptr<VirtualHub>>& hubs) : m_hubs(hubs) {}

    /// Carries out one line; `ok`, or `error: ` and the reason. A plug or unplug is done when this
    /// returns.
    std::string answer(std::string_view line);
    bool quit() const { return m_quit; } ///< whether that was asked for

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
