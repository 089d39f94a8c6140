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
    /// Adds the option to `app`. This object must live until `app` has parsed.
    explicit SimulatedHubFlag(CLI::App& app);
    SimulatedHubFlag(const SimulatedHubFlag&) = delete;
    SimulatedHubFlag& operator=(const SimulatedHubFlag&) = delete;
    ~SimulatedHubFlag() = default;

    /// After parsing: the options as typed, or an empty text for the flag alone. No value if the
    /// tool should use the real machine.
    std::optional<std::string> options() const;

private:
    std::string m_text;
    CLI::Option* m_option;
};

} // namespace vornadel
