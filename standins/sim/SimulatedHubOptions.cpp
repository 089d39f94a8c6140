#include "standins/sim/SimulatedHubOptions.h"

#include "standins/sim/FlashFile.h"
#include "standins/sim/TextValues.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstddef>
#include <filesystem>
#include <set>
#include <utility>

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

/// Whom a value configures if it names no hub.
enum class Reach { EveryHub, FirstHub };

struct KeyRow {
    std::string_view key;
    bool repeats;
    Reach reach;
    int colons; // in a value; one more may follow the number of a hub. kNoNumber: no hub is named
    bool (*read)(std::string_view value, SimulatedHubOptions& options, std::string& error);
};

constexpr int kNoNumber = -1;
constexpr std::array<KeyRow, 5> kKeys = {{
    {"image", false, Reach::EveryHub, kNoNumber, readImage},
    {"latency", false, Reach::EveryHub, kNoNumber, readLatency},
    {"mode", false, Reach::EveryHub, 0, readMode},
    {"ids", false, Reach::EveryHub, 2, readIds},
    {"fault", true, Reach::FirstHub, 0, readFault},
}};

/// One option of the text.
struct Option {
    const KeyRow* row = nullptr;
    std::string_view value;
    std::optional<unsigned> hub; // the number before the value
};

/// Takes the number of a hub off a value, if there is one.
std::optional<unsigned> takeHubNumber(const KeyRow& row, std::string_view& value)
{
    std::string_view rest = value;
    const std::optional<unsigned> number = wholeNumber(cutAt(rest, ':'), 10, UINT_MAX);
    const bool numbered = row.colons != kNoNumber && number &&
                          std::count(value.begin(), value.end(), ':') > row.colons;
    if (!numbered) {
        return std::nullopt;
    }
    value = rest;
    return number;
}

/// The options of a text for several hubs, `count` of them, or for one: then `count` is null, and
/// no value names a hub.
class OptionReader
{
public:
    explicit OptionReader(unsigned* count) : m_count(count) {}

    bool read(std::string_view text, std::string& error)
    {
        bool more = !text.empty();
        while (more) {
            more = text.find(',') != std::string_view::npos;
            if (!readOption(cutAt(text, ','), error)) {
                return false;
            }
        }
        return true;
    }

    const std::vector<Option>& options() const { return m_options; }

private:
    bool readOption(std::string_view text, std::string& error)
    {
        std::string_view value = text;
        const std::string_view key = cutAt(value, '=');
        const auto* row = std::find_if(kKeys.begin(), kKeys.end(), [&](const KeyRow& candidate) {
            return candidate.key == key;
        });
        const bool counts = m_count != nullptr && key == "hubs";
        if (row == kKeys.end() && !counts) {
            error = "unknown option \"" + std::string(text) + "\"; the options are " +
                    (m_count != nullptr ? "hubs, " : "") + "image, latency, mode, ids and fault";
            return false;
        }
        if (key.size() == text.size()) {
            error = std::string(key) + " needs a value: " + std::string(key) + "=VALUE";
            return false;
        }
        Option option = {counts ? nullptr : row, value, {}};
        if (m_count != nullptr && !counts) {
            option.hub = takeHubNumber(*row, option.value);
        }
        if ((counts || !row->repeats) && !m_seen.emplace(key, option.hub).second) {
            error = std::string(key) + " is given twice";
            return false;
        }
        if (counts) {
            return readCount(value, error);
        }
        m_options.push_back(option);
        return true;
    }

    bool readCount(std::string_view value, std::string& error)
    {
        const std::optional<unsigned> count = wholeNumber(value, 10, kMostSimulatedHubs);
        error = "hubs must be a number from 1 to " + std::to_string(kMostSimulatedHubs) +
                ", not \"" + std::string(value) + '"';
        *m_count = count.value_or(0);
        return *m_count > 0;
    }

    unsigned* const m_count;
    std::vector<Option> m_options;
    std::set<std::pair<std::string_view, std::optional<unsigned>>> m_seen;
};

/// Gives the value to the hubs that it is for.
bool apply(const Option& option, std::vector<SimulatedHubOptions>& hubs, std::string& error)
{
    const bool every = !option.hub && option.row->reach == Reach::EveryHub;
    const std::size_t first = every ? 1 : option.hub.value_or(1);
    if (first < 1 || first > hubs.size()) {
        error = "there is no hub " + std::to_string(first) + " for " +
                std::string(option.row->key) + "; hubs=" + std::to_string(hubs.size());
        return false;
    }
    const auto begin = hubs.begin() + static_cast<std::ptrdiff_t>(first - 1);
    return std::all_of(begin, every ? hubs.end() : begin + 1, [&](SimulatedHubOptions& hub) {
        return option.row->read(option.value, hub, error);
    });
}

/// "hub-2.bin" for "hub.bin".
std::string numberedFile(const std::string& name, std::size_t number)
{
    std::filesystem::path path(name);
    std::string numbered = path.stem().string();
    numbered += '-' + std::to_string(number);
    return path.replace_filename(numbered + path.extension().string()).string();
}

/// Each hub needs a file of its own.
void numberFiles(std::vector<SimulatedHubOptions>& hubs)
{
    for (std::size_t number = 2; number <= hubs.size(); ++number) {
        SimulatedHubOptions& hub = hubs[number - 1];
        const std::string file = hub.image.empty() ? defaultFlashFile() : hub.image;
        hub.image = file.empty() ? file : numberedFile(file, number);
    }
}

} // namespace

bool parseSimulatedHubOptions(std::string_view text, SimulatedHubOptions& options,
                              std::string& error)
{
    OptionReader reader(nullptr);
    std::vector<SimulatedHubOptions> parsed = {options};
    if (!reader.read(text, error) ||
        !std::all_of(reader.options().begin(), reader.options().end(),
                     [&](const Option& option) { return apply(option, parsed, error); })) {
        return false;
    }
    error.clear();
    options = parsed.front();
    return true;
}

bool parseSimulatedHubs(std::string_view text, std::vector<SimulatedHubOptions>& hubs,
                        std::string& error)
{
    unsigned count = 1;
    OptionReader reader(&count);
    if (!reader.read(text, error)) {
        return false;
    }
    std::vector<SimulatedHubOptions> parsed(count);
    for (const bool numbered : {false, true}) { // what is said of one hub comes last, and wins
        for (const Option& option : reader.options()) {
            if (option.hub.has_value() == numbered && !apply(option, parsed, error)) {
                return false;
            }
        }
    }
    numberFiles(parsed);
    error.clear();
    hubs = std::move(parsed);
    return true;
}

} // namespace vornadel
