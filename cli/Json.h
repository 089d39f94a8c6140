#pragma once

#include <nlohmann/json_fwd.hpp>

namespace vornadel
{

/// Keeps the order of its keys. A source that makes one includes <nlohmann/json.hpp>.
using Json = nlohmann::ordered_json;

struct Command;

/// Prints the one object that is a command's output with --json.
void printObject(const Command& command, const Json& object);

} // namespace vornadel
