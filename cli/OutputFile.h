#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace vornadel
{

struct Command;
struct CommandLine;

// The file that a command writes: "-" is standard output, where the command then prints nothing
// else. A file that exists is replaced only with --force.

bool isStandardOutput(const std::string& path);

/// Whether the verb of a command line saves its file to standard output.
bool outputIsStandard(const CommandLine& line);

/// Whether the file could be saved now, for a check before the work whose result is to be saved.
/// Returns the exit status; a failure has been told in a sentence that begins with `intro`.
int checkOutput(const Command& command, const std::string& path, const std::string& intro = {});

/// Saves the whole file or nothing. False, and why not in `problem`.
bool writeOutput(const Command& command, const std::string& path,
                 std::span<const std::uint8_t> bytes, std::string& problem);

} // namespace vornadel
