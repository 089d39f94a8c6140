#include "standins/virtual_hub/CommandLine.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <system_error>

namespace vornadel
{

namespace
{

/// Fills in the hubs; without any, one with the default flash file. False and a sentence in `error`
/// for options that a virtual hub cannot have.
bool readHubs(const std::vector<std::string>& texts, std::vector<SimulatedHubOptions>& hubs,
              std::string& error)
{
    if (texts.size() > kMostHubs) {
        error = "at most " + std::to_string(kMostHubs) + " hubs";
        return false;
    }
    hubs.clear();
    for (const std::string& text : texts) {
        SimulatedHubOptions options;
        const bool fits =
            parseSimulatedHubOptions(text, options, error) &&
            std::all_of(options.faults.begin(), options.faults.end(),
                        [&](const Fault& fault) { return faultFitsABus(fault, error); });
        if (!fits) {
            return false;
        }
        hubs.push_back(options);
    }
    if (hubs.empty()) {
        hubs.emplace_back();
    }
    return true;
}

/// Reads decimal digits only, without sign or space.
bool readPort(const std::string& text, std::uint16_t& port)
{
    const char* const end = text.data() + text.size();
    const auto [stop, code] = std::from_chars(text.data(), end, port);
    return code == std::errc() && stop == end;
}

} // namespace

bool faultFitsABus(const Fault& fault, std::string& error)
{
    if (fault.kind == FaultKind::OpenRefused || fault.kind == FaultKind::Refused) {
        error = "a virtual hub cannot have the faults open-refused and refused: it does not see "
                "opens";
        return false;
    }
    return true;
}

std::optional<int> parseVirtualHubCommandLine(int argc, const char* const* argv,
                                              VirtualHubCommandLine& commandLine, std::ostream& out,
                                              std::ostream& err)
{
    CLI::App app("Puts simulated hubs onto this machine's USB, or serves them over USB/IP.\n"
                 "It reads commands from standard input, one per line:\n"
                 "  plug [N], plug-rom [N], unplug [N], fault FAULT [N], status [N], quit.",
                 "vornadel-virtual-hub");
    app.set_version_flag("--version",
                         "vornadel-virtual-hub " VORNADEL_VERSION " (" VORNADEL_COMMIT ")");
    std::vector<std::string> hubs;
    app.add_option("--hub", hubs,
                   "One hub: KEY=VALUE,... with the keys image,\n"
                   "latency, mode, ids and fault. Up to 64 times;\n"
                   "without it: one hub with the default flash file")
        ->type_name("OPTIONS")
        ->allow_extra_args(false);
    bool attach = false;
    CLI::Option* const attached = app.add_flag(
        "--attach", attach,
        "Attach the hubs to virtual ports of the kernel\n(module vhci_hcd); the default");
    std::string port;
    CLI::Option* const serve = app.add_flag(
        "--serve{3240}", port,
        "Serve the hubs over USB/IP on 127.0.0.1; =PORT\nfor another port, 0 for any free one");
    serve->multi_option_policy(CLI::MultiOptionPolicy::Throw);
    serve->excludes(attached);

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& ended) {
        const bool wrong = ended.get_exit_code() != static_cast<int>(CLI::ExitCodes::Success);
        app.exit(ended, out, err);
        return wrong ? kBadUsage : kEndedWell;
    }
    std::string error;
    if (!readHubs(hubs, commandLine.hubs, error)) {
        err << "--hub: " << error << '\n';
        return kBadUsage;
    }
    if (serve->count() > 0) {
        std::uint16_t number = 0;
        if (!readPort(port, number)) {
            err << "--serve: \"" << port << "\" is not a port; give a number up to 65535\n";
            return kBadUsage;
        }
        commandLine.servePort = number;
    }
    return std::nullopt;
}

} // namespace vornadel
