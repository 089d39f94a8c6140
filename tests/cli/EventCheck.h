#pragma once

#include "cli/Json.h"

#include <string>
#include <vector>

namespace vornadel::test
{

/// The events in the output of a command, after a check that each fits docs/events.schema.json,
/// that they are numbered without gaps, and that exactly one result is among them, the last. What
/// is wrong becomes a failure of the test.
std::vector<Json> checkedEvents(const std::string& output);

} // namespace vornadel::test
