#pragma once

#include <optional>
#include <string>

namespace CLI
{
class App;
class Option;
} // namespace CLI

namespace vornadel
{

/// The option --simulated-hub[=KEY=VALUE,...] of a front end's command line.
class SimulatedHubFlag
{
public:
    /// Adds the option to `app`, which parses while this object lives.
    explicit SimulatedHubFlag(CLI::App& app);
    SimulatedHubFlag(const SimulatedHubFlag&) = delete;
    SimulatedHubFlag& operator=(const SimulatedHubFlag&) = delete;
    ~SimulatedHubFlag() = default;

    /// After parsing: the options as they were typed, empty for the flag alone. Nothing when the
    /// tool is to work on the real machine.
    std::optional<std::string> options() const;

private:
    std::string m_text;
    CLI::Option* m_option;
};

} // namespace vornadel
