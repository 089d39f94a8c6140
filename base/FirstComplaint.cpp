#include "base/FirstComplaint.h"

#include <array>
#include <cstdarg>
#include <cstdio>
#include <string_view>

namespace vornadel
{

namespace
{

std::string& complaint()
{
    static std::string first;
    return first;
}

} // namespace

const std::string& firstComplaint() { return complaint(); }

void resetFirstComplaint() { complaint().clear(); }

int keepFirstComplaint(const char* format, ...)
{
    std::array<char, 1024> text{};
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text.data(), text.size(), format, arguments);
    va_end(arguments);
    if (complaint().empty()) {
        const std::string_view all(text.data());
        const std::string_view line = all.substr(0, all.find('\n'));
        complaint() = line.substr(0, line.find_last_not_of(':') + 1);
    }
    return 0;
}

} // namespace vornadel
