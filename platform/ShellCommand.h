#pragma once

#include "platform/Shell.h"

#include <span>
#include <string>

namespace vornadel
{

/// Formats `before` + `text` + `after` into a buffer, which is cleared first, and runs that through
/// the shell. A command cut short could do anything, so one that does not fit ends the process with
/// a line on standard error instead.
void runShellCommand(Shell& shell, std::span<char> buffer, const char* before,
                     const std::string& text, const char* after);

} // namespace vornadel
