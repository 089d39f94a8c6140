#include "cli/HubSelector.h"

#include <algorithm>
#include <charconv>
#include <string_view>

namespace vornadel
{

namespace
{

bool isDigit(char c) { return c >= '0' && c <= '9'; }

bool isHexDigit(char c) { return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }

char lowerCase(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

/// A bus, a dash, and a number for each port on the way: "2-1.4", "sim-1".
bool isPort(std::string_view text)
{
    const std::size_t dash = text.find('-');
    if (dash == 0 || dash == std::string_view::npos ||
        !std::all_of(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(dash),
                     [](char c) { return isDigit(c) || (c >= 'a' && c <= 'z'); })) {
        return false;
    }
    bool afterDigit = false;
    for (const char c : text.substr(dash + 1)) {
        if (!isDigit(c) && (c != '.' || !afterDigit)) {
            return false;
        }
        afterDigit = isDigit(c);
    }
    return afterDigit;
}

std::optional<std::uint16_t> hexNumber(std::string_view text)
{
    std::uint16_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number, 16);
    if (error != std::errc() || stop != end || text.front() == '-') {
        return std::nullopt;
    }
    return number;
}

} // namespace

bool isPath(const std::string& text)
{
    const std::string_view whole(text);
    const std::size_t slash = whole.find('/');
    return slash == std::string_view::npos
               ? isPort(whole)
               : isPort(whole.substr(0, slash)) && isPort(whole.substr(slash + 1));
}

std::string containerIdIn(const std::string& text)
{
    static constexpr std::string_view kShape = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";
    const bool braces = text.size() > 2 && text.front() == '{' && text.back() == '}';
    std::string id = braces ? text.substr(1, text.size() - 2) : text;
    if (!std::equal(id.begin(), id.end(), kShape.begin(), kShape.end(),
                    [](char c, char kind) { return kind == 'x' ? isHexDigit(c) : c == kind; })) {
        return {};
    }
    std::transform(id.begin(), id.end(), id.begin(), lowerCase);
    return '{' + id + '}';
}

std::optional<UsbIds> idsIn(const std::string& text)
{
    const std::string_view whole(text);
    const std::size_t colon = whole.find(':');
    if (colon == std::string_view::npos || whole.size() - colon > 5 || colon > 4) {
        return std::nullopt;
    }
    const auto vendor = hexNumber(whole.substr(0, colon));
    const auto product = hexNumber(whole.substr(colon + 1));
    return vendor && product ? std::optional(UsbIds{*vendor, *product}) : std::nullopt;
}

} // namespace vornadel
