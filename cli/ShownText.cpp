#include "cli/ShownText.h"

#include <algorithm>
#include <iomanip>
#include <sstream>
#include <utility>

namespace vornadel
{

std::string hex4(unsigned number)
{
    std::ostringstream text;
    text << std::hex << std::uppercase << std::setw(4) << std::setfill('0') << number;
    return text.str();
}

std::string printable(std::string_view text)
{
    std::string shown(text);
    for (char& c : shown) {
        if (c < ' ' || c > '~') {
            c = '?';
        }
    }
    return shown;
}

std::string orDash(std::string text) { return text.empty() ? "-" : std::move(text); }

std::string alignedLines(const std::vector<std::vector<std::string>>& rows)
{
    std::vector<std::size_t> widths;
    for (const auto& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], row[i].size());
        }
    }
    std::string lines;
    for (const auto& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            lines += row[i];
            if (i + 1 < row.size()) {
                lines.append(widths[i] - row[i].size() + 2, ' ');
            }
        }
        lines += '\n';
    }
    return lines;
}

} // namespace vornadel
