#pragma once

#include <string>
#include <vector>

namespace vornadel
{

struct Command;

/// What a look at the machine has found.
struct Finding {
    enum class State { Ok, Warning, Failure };

    State state = State::Ok;
    std::string check{};  ///< what was looked at: "configuration", "hub 2-3/1-3"
    std::string text{};   ///< without a full stop
    std::string remedy{}; ///< a command or a sentence; empty if nothing need be done
    int status = 0;       ///< of the program, for a Failure
};

using Findings = std::vector<Finding>;

// The looks. Each sends reads at most.
Findings configurationFindings(const Command& command);
Findings usbFindings(const Command& command);
/// Each attached hub: who works on it, whether it can be opened, and its halves.
Findings hubFindings(const Command& command);
/// The rule that lets users open hubs, against the configuration; nothing on a Mac.
Findings ruleFindings(const Command& command);
Findings logFindings(const Command& command);

/// Prints the findings, or one object with --json. Returns the exit status: that of the first
/// failure.
int tellFindings(const Command& command, const Findings& findings);

} // namespace vornadel
