#pragma once

#include <span>
#include <string>

namespace vornadel
{

/// Formats `before` + `text` + `after` into a buffer, which is cleared first, and returns the
/// buffer. A command cut short could do anything, so one that does not fit ends the process with a
/// line on standard error instead.
const char* formatShellCommand(std::span<char> buffer, const char* before, const std::string& text,
                               const char* after);

} // namespace vornadel
