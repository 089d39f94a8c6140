#pragma once

#include <charconv>
#include <optional>
#include <string_view>
#include <system_error>

namespace vornadel
{

/// The whole text as an unsigned number in the given base, at most `limit`; otherwise empty.
inline std::optional<unsigned> wholeNumber(std::string_view text, int base, unsigned limit)
{
    unsigned value = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, code] = std::from_chars(text.data(), end, value, base);
    if (code != std::errc() || stop != end || value > limit) {
        return std::nullopt;
    }
    return value;
}

/// Cuts `text` at the first `separator`: returns the part before it and leaves the rest, or
/// nothing, in `text`.
inline std::string_view cutAt(std::string_view& text, char separator)
{
    const std::size_t at = text.find(separator);
    const std::string_view head = text.substr(0, at);
    text = at == std::string_view::npos ? std::string_view() : text.substr(at + 1);
    return head;
}

} // namespace vornadel
