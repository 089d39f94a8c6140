#include "cli/HubSelector.h"

#include <algorithm>
#include <cctype>
#include <regex>
#include <vector>

namespace vornadel
{

namespace
{

constexpr std::size_t kLongest = 100; // longer than every text below; keeps the matching short

constexpr const char* kPath = R"([0-9A-Za-z]+-[0-9]+(\.[0-9]+)*(/[0-9A-Za-z]+-[0-9]+(\.[0-9]+)*)?)";
constexpr const char* kContainerId = R"([0-9A-Fa-f]{8}(-[0-9A-Fa-f]{4}){3}-[0-9A-Fa-f]{12})";
constexpr const char* kIds = "([0-9A-Fa-f]{1,4}):([0-9A-Fa-f]{1,4})";

/// The text and its parts in parentheses. Nothing if the text does not look like this.
std::vector<std::string> partsOf(const std::string& text, const char* pattern)
{
    std::smatch match;
    if (text.size() > kLongest || !std::regex_match(text, match, std::regex(pattern))) {
        return {};
    }
    return {match.begin(), match.end()};
}

std::uint16_t numberIn(const std::string& hex)
{
    return static_cast<std::uint16_t>(std::stoul(hex, nullptr, 16));
}

} // namespace

bool isPath(const std::string& text) { return !partsOf(text, kPath).empty(); }

std::string containerIdIn(const std::string& text)
{
    const bool braces = text.starts_with('{') && text.ends_with('}');
    std::string id = braces ? text.substr(1, text.size() - 2) : text;
    if (partsOf(id, kContainerId).empty()) {
        return {};
    }
    std::transform(id.begin(), id.end(), id.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return '{' + id + '}';
}

std::optional<UsbIds> idsIn(const std::string& text)
{
    const std::vector<std::string> parts = partsOf(text, kIds);
    if (parts.empty()) {
        return {};
    }
    return UsbIds{numberIn(parts[1]), numberIn(parts[2])};
}

} // namespace vornadel
