#pragma once

#include <string>
#include <string_view>

namespace vornadel
{

/// Four upper-case hex digits.
std::string hex4(unsigned number);

/// Bytes outside printable ASCII would reach the terminal as control codes; they become "?".
std::string printable(std::string_view text);

} // namespace vornadel
