#pragma once

#include <nlohmann/json_fwd.hpp>

#include <string>

namespace vornadel
{

/// Keeps the order of its keys. A source that makes one includes <nlohmann/json.hpp>.
using Json = nlohmann::ordered_json;

struct Command;

/// In one line, or indented. Bytes that are not UTF-8, from a device or a file name, do not make it
/// invalid.
std::string textOf(const Json& value, int indent = -1);

/// Null for an empty text.
Json orNull(const std::string& text);

/// Prints the one object that is a command's output with --json. Adds "v".
void printObject(const Command& command, const Json& object);

} // namespace vornadel
