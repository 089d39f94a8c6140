#pragma once

#include <string>
#include <vector>

namespace vornadel
{

/// Shows the manual of the first of these folders that has one, in the desktop's own program for
/// it. If that fails, a line on the console log says why.
void openManual(const std::vector<std::string>& folders);

} // namespace vornadel
