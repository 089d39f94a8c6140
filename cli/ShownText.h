#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vornadel
{

/// Four upper-case hex digits.
std::string hex4(unsigned number);

/// Bytes outside printable ASCII would reach the terminal as control codes; they become "?".
std::string printable(std::string_view text);

/// A dash for a text that is not known.
std::string orDash(std::string text);

/// One line a row, the columns aligned.
std::string alignedLines(const std::vector<std::vector<std::string>>& rows);

} // namespace vornadel
