#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace CLI
{
class App;
class FormatterBase;
} // namespace CLI

namespace vornadel
{

/// Prints the help in at most 80 columns.
std::shared_ptr<CLI::FormatterBase> helpFormatter();

/// A text in lines of at most 80 columns, all but the first after `indent` spaces. `used` columns
/// of the first line are taken already.
std::string wrappedText(const std::string& text, std::size_t indent, std::size_t used);

/// The exit statuses, a line each.
std::string exitStatusText();

/// The candidate that a word was probably meant to be: that with the fewest letters inserted, left
/// out, replaced or swapped with the next. Empty if there are no candidates.
std::string nearestWord(std::string_view word, const std::vector<std::string>& candidates);

} // namespace vornadel
