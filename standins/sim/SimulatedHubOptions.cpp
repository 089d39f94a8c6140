#include "standins/sim/SimulatedHubOptions.h"

#include "standins/sim/TextValues.h"

#include <algorithm>
#include <array>
#include <set>

namespace vornadel
{

namespace
{

bool readImage(std::string_view value, SimulatedHubOptions& options, std::string& error)
{
    error = "image needs a file name";
    options.image = value;
    return !value.empty();
}

bool readLatency(std::string_view value, SimulatedHubOptions& options, std::string& error)
{
    error = "latency must be real or none, not \"" + std::string(value) + '"';
    options.latency = value == "none" ? SimulatedLatency::None : SimulatedLatency::Real;
    return value == "none" || value == "real";
}

bool readMode(std::string_view value, SimulatedHubOptions& options, std::string& error)
{
    error = "mode must be flash or rom, not \"" + std::string(value) + '"';
    options.mode = value == "rom" ? HubCode::Rom : HubCode::Flash;
    return value == "rom" || value == "flash";
}

bool readIds(std::string_view value, SimulatedHubOptions& options, std::string& error)
{
    error = "ids must be VID:SSPID:HSPID in hex, not \"" + std::string(value) + '"';
    if (std::count(value.begin(), value.end(), ':') != 2) {
        return false;
    }
    std::array<std::uint16_t, 3> words{};
    for (std::uint16_t& word : words) {
        std::string_view digits = cutAt(value, ':');
        if (digits.substr(0, 2) == "0x" || digits.substr(0, 2) == "0X") {
            digits.remove_prefix(2);
        }
        const std::optional<unsigned> number = wholeNumber(digits, 16, 0xFFFF);
        if (!number || digits.size() > 4) {
            return false;
        }
        word = static_cast<std::uint16_t>(*number);
    }
    options.ids = SimulatedIds{words[0], words[1], words[2]};
    return true;
}

bool readFault(std::string_view value, SimulatedHubOptions& options, std::string& error)
{
    Fault fault;
    if (!parseFault(value, fault, error)) {
        return false;
    }
    options.faults.push_back(fault);
    return true;
}

struct KeyRow {
    std::string_view key;
    bool repeats;
    bool (*read)(std::string_view value, SimulatedHubOptions& options, std::string& error);
};

constexpr std::array<KeyRow, 5> kKeys = {{
    {"image", false, readImage},
    {"latency", false, readLatency},
    {"mode", false, readMode},
    {"ids", false, readIds},
    {"fault", true, readFault},
}};

} // namespace

bool parseSimulatedHubOptions(std::string_view text, SimulatedHubOptions& options,
                              std::string& error)
{
    SimulatedHubOptions parsed = options;
    std::set<std::string_view> seen;
    bool more = !text.empty();
    while (more) {
        more = text.find(',') != std::string_view::npos;
        std::string_view value = cutAt(text, ',');
        const std::string option(value);
        const std::string_view key = cutAt(value, '=');
        const auto* row = std::find_if(kKeys.begin(), kKeys.end(), [&](const KeyRow& candidate) {
            return candidate.key == key;
        });
        if (row == kKeys.end()) {
            error = "unknown option \"" + option +
                    "\"; the options are image, latency, mode, ids and fault";
            return false;
        }
        if (key.size() == option.size()) {
            error = option;
            error += " needs a value: " + option + "=VALUE";
            return false;
        }
        if (!seen.insert(row->key).second && !row->repeats) {
            error = std::string(key) + " is given twice";
            return false;
        }
        if (!row->read(value, parsed, error)) {
            return false;
        }
    }
    error.clear();
    options = parsed;
    return true;
}

} // namespace vornadel
