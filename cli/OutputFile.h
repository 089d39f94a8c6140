#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace vornadel
{

struct Command;

// The file that a command writes: "-" is standard output, where the command then prints nothing
// else. A file that exists is replaced only with --force.

bool isStandardOutput(const std::string& path);

/// Why the file could not be saved now; empty if it could. For a check before the work whose result
/// is to be saved.
std::string whyNotWritten(const Command& command, const std::string& path);

/// Saves the whole file or nothing. False, and why not in `problem`.
bool writeOutput(const Command& command, const std::string& path,
                 std::span<const std::uint8_t> bytes, std::string& problem);

} // namespace vornadel
