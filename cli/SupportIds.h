#pragma once

#include "firmware/FwImage.h"

namespace vornadel
{

struct Command;

/// Makes sure that the hub is found with the ids in the image. Returns the exit status.
int supportIds(const Command& command, const FwImage& image);

} // namespace vornadel
