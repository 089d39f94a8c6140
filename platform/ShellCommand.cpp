#include "platform/ShellCommand.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace vornadel
{

const char* formatShellCommand(std::span<char> buffer, const char* before, const std::string& text,
                               const char* after)
{
    std::fill(buffer.begin(), buffer.end(), '\0');
    const int length =
        std::snprintf(buffer.data(), buffer.size(), "%s%s%s", before, text.c_str(), after);
    if (length < 0 || static_cast<std::size_t>(length) >= buffer.size()) {
        std::fprintf(stderr,
                     "Vornadel: a shell command of %d bytes does not fit into %zu; stopping\n",
                     length, buffer.size() - 1);
        std::_Exit(EXIT_FAILURE);
    }
    return buffer.data();
}

} // namespace vornadel
