#pragma once

#include <string>

namespace vornadel
{

struct Command;

/// A word for a shell. Never has control characters, nor bytes that are not UTF-8: a file with such
/// a name is still the one that the command means.
std::string shellWord(const std::string& word);

/// Fills in the placeholders of FailureKind::next. The result can be pasted into a shell.
std::string nextCommand(const Command& command, const std::string& pattern);

/// The command line of this run for the hub at a place, without the options called `without` and
/// their values.
std::string commandAgain(const Command& command, const std::string& place,
                         const std::string& without = {});

} // namespace vornadel
