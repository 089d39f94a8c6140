#pragma once

#include "cli/Json.h"
#include "platform/Clock.h"

namespace vornadel
{

struct CommandResult;

/// How a command ended, for a machine: the fields of the event "result".
Json resultFields(const CommandResult& result, int status, Clock::Duration took);

} // namespace vornadel
