#include "standins/virtual_hub/Console.h"

#include "standins/virtual_hub/CommandLine.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <sstream>

namespace vornadel
{

namespace
{

const std::string kDone = "ok";

std::string refusal(const std::string& reason) { return "error: " + reason; }

} // namespace

struct Console::CommandRow {
    std::string_view name;
    bool takesArgument; // before the number of the hub
    std::string (Console::*carryOut)(VirtualHub&, const std::string&);
};

std::string Console::answer(std::string_view line)
{
    static constexpr std::array<CommandRow, 5> kCommands = {{
        {"plug", false, &Console::plug},
        {"plug-rom", false, &Console::plugRom},
        {"unplug", false, &Console::unplug},
        {"fault", true, &Console::addFault},
        {"status", false, &Console::status},
    }};
    std::istringstream words{std::string(line)};
    std::string name;
    std::string argument;
    std::string number = "1";
    std::string tooMuch;
    words >> name;
    if (name == "quit" && !(words >> tooMuch)) {
        m_quit = true;
        return kDone;
    }
    const auto* row =
        std::find_if(kCommands.begin(), kCommands.end(),
                     [&](const CommandRow& candidate) { return candidate.name == name; });
    if (row == kCommands.end()) {
        return refusal("unknown command; use plug [N], plug-rom [N], unplug [N], fault FAULT [N], "
                       "status [N] or quit");
    }
    if (row->takesArgument && !(words >> argument)) {
        return refusal(name + " needs an argument");
    }
    words >> number;
    if (words >> tooMuch) {
        return refusal("too many words");
    }
    VirtualHub* const hub = hubNumbered(number.empty() ? "1" : number);
    if (hub == nullptr) {
        return refusal("there is no hub " + number + "; the hubs have the numbers 1 to " +
                       std::to_string(m_hubs.size()));
    }
    return (this->*row->carryOut)(*hub, argument);
}

VirtualHub* Console::hubNumbered(const std::string& number)
{
    std::size_t value = 0;
    const char* const end = number.data() + number.size();
    const auto [stop, code] = std::from_chars(number.data(), end, value);
    const bool known = code == std::errc() && stop == end && value >= 1 && value <= m_hubs.size();
    return known ? m_hubs[value - 1].get() : nullptr;
}

std::string Console::plug(VirtualHub& hub, const std::string& /*argument*/)
{
    hub.hub().replug(HubCode::Flash);
    hub.waitUntilShown();
    return kDone;
}

std::string Console::plugRom(VirtualHub& hub, const std::string& /*argument*/)
{
    if (!hub.hub().attachedHalves().empty()) {
        return refusal("the hub is already plugged in");
    }
    hub.hub().replug(HubCode::Rom);
    hub.waitUntilShown();
    return kDone;
}

std::string Console::unplug(VirtualHub& hub, const std::string& /*argument*/)
{
    hub.hub().unplug();
    hub.waitUntilShown();
    return kDone;
}

std::string Console::addFault(VirtualHub& hub, const std::string& argument)
{
    Fault fault;
    std::string error;
    if (!parseFault(argument, fault, error) || !faultFitsABus(fault, error)) {
        return refusal(error);
    }
    hub.hub().addFault(fault);
    return kDone;
}

std::string Console::status(VirtualHub& hub, const std::string& /*argument*/)
{
    const auto place = [&](HubSpeed half) {
        const std::string id = hub.busId(half);
        return id.empty() ? std::string("-") : id;
    };
    std::ostringstream line;
    line << kDone << " code=" << (hub.hub().runningCode() == HubCode::Flash ? "flash" : "rom")
         << " superspeed=" << place(HubSpeed::SuperSpeed)
         << " high-speed=" << place(HubSpeed::HighSpeed) << " requests=" << hub.hub().requestCount()
         << " faults=" << hub.hub().faultsTriggered();
    return line.str();
}

} // namespace vornadel
