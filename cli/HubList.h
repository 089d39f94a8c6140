#pragma once

#include "cli/HubChoices.h"

#include <cstddef>
#include <vector>

namespace vornadel
{

struct HubCount {
    std::size_t shown = 0;
    std::size_t silent = 0; ///< those of them that did not answer, or were not asked
};

/// Shows the selected ones of the attached hubs, one line each: where, its ids and texts, and the
/// version and the code that it answers, or why it does not. Returns the exit status, which is a
/// failure only if none is selected.
int showHubs(const Command& command, const std::vector<HubChoice>& attached, HubCount& count);

} // namespace vornadel
