#include "config/SimulatedHubFlag.h"

#include <CLI/CLI.hpp>

namespace vornadel
{

SimulatedHubFlag::SimulatedHubFlag(CLI::App& app)
    : m_option(app.add_flag("--simulated-hub", m_text,
                            "Work on the built-in simulated hub;\n"
                            "=KEY=VALUE,... configures it, with the keys\n"
                            "hubs, image, latency, mode, ids and fault"))
{
    // Otherwise the last of several would silently win.
    m_option->multi_option_policy(CLI::MultiOptionPolicy::Throw);
}

std::optional<std::string> SimulatedHubFlag::options() const
{
    if (m_option->count() == 0) {
        return std::nullopt;
    }
    return m_text == "true" ? "" : m_text; // CLI11 stores "true" for a flag without a value
}

} // namespace vornadel
