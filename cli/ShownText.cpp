#include "cli/ShownText.h"

#include <iomanip>
#include <sstream>

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

} // namespace vornadel
