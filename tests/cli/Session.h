#pragma once

#include "cli/RunCommand.h"
#include "cli/Verbs.h"
#include "hub/HubTransport.h"
#include "platform/Platform.h"
#include "standins/sim/SimulatedBus.h"
#include "tests/support/FakeMachine.h"
#include "tests/support/HubGuard.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/VirtualClock.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace vornadel::test
{

/// A hub in memory on virtual time, a folder for files, and the output of a command.
class Session
{
public:
    /// `options` as on the command line, without `image`.
    explicit Session(std::string_view options = {})
    {
        std::vector<SimulatedHubOptions> hubs;
        std::string error;
        EXPECT_TRUE(parseSimulatedHubs(options, hubs, error)) << error;
        for (SimulatedHubOptions& hub : hubs) {
            hub.keepInMemory = true;
        }
        bus = SimulatedBus::create(hubs, clock, error);
        EXPECT_NE(bus, nullptr) << error;
        folder.write("config.ini", "[Support Vid Pid]\n"
                                   "VID_00 = 0x1209\nSSPID_00 = 0x0001\nHSPID_00 = 0x0002\n");
    }

    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    ~Session() { hubIsClosed(); }

    int run(const CommandLine& commandLine, bool terminal = false)
    {
        return runOn(*bus, commandLine, terminal);
    }

    int runOn(UsbBus& other, const CommandLine& commandLine, bool terminal = false)
    {
        out.str({});
        err.str({});
        Platform platform{other, shell, privileged, version, clock, &sleep};
        Hub_UsePlatform(other, clock);
        if (interruptBeforeCommands) {
            Hub_Abandon();
        }
        env.outIsTerminal = terminal;
        return runCommand(commandLine, platform, folder.path(), out, err, env, stop);
    }

    /// Calls `use` with what a verb works with.
    template <typename Use>
    void withCommand(const CommandLine& commandLine, Use use)
    {
        Platform platform{*bus, shell, privileged, version, clock};
        const std::string folderPath = folder.path();
        const std::string configFile = folder.path("config.ini");
        const ToolConfig config = readToolConfig(configFile);
        const Log log;
        CommandResult result;
        use(Command{commandLine, platform, folderPath, configFile, config, out, out, err, env, stop,
                    log, nullptr, result, ""});
    }

    // On the hub that `selector` selects:
    int update(const std::string& image, bool terminal = false)
    {
        return run(line("update", image), terminal);
    }
    int read(const std::string& file) { return run(line("read", file)); }
    int erase() { return run(line("erase")); }
    int info(const std::string& image = {}) { return run(line("info", image)); }
    int list() { return run(line("list")); }

    /// Of a user who agrees to everything.
    CommandLine line(std::string_view verb, const std::string& image = {}) const
    {
        CommandLine agreed;
        agreed.verb = verbCalled(verb);
        agreed.image = image;
        agreed.hub = selector;
        agreed.yes = true;
        agreed.force = true;
        return agreed;
    }

    /// Standard error with only what went wrong, of the four lines of a failure, without its id.
    std::string told() const
    {
        std::istringstream lines(err.str());
        std::string text;
        for (std::string line; std::getline(lines, line);) {
            const std::size_t id = line.ends_with(']') ? line.rfind(" [") : line.size();
            text += line.starts_with("  ") ? "" : line.substr(0, id) + '\n';
        }
        return text;
    }

    SimulatedHub& hub(std::size_t number = 1) { return bus->hub(number); }
    /// Locks a hub's place, as another flow does.
    std::unique_ptr<PlaceLock> occupy(const std::string& place)
    {
        UsbPlace locked;
        locked.own.path = place;
        PlaceOwner owner;
        return bus->placeLocks().lock(locked, {}, owner);
    }

    HubSelector selector;
    std::string backupFolder() const { return state.path("vornadel/backups"); }

    /// The path of the one backup; empty if there is not one.
    std::string onlyBackup() const
    {
        std::string path;
        std::error_code none;
        for (const auto& entry : std::filesystem::directory_iterator(backupFolder(), none)) {
            path = path.empty() ? entry.path().string() : std::string();
        }
        return path;
    }

    const TemporaryFolder state{placeInMemory()}; ///< for logs and backups
    /// Only XDG_STATE_HOME is set, nothing is a terminal, standard input is empty, and the machine
    /// has no configuration.
    Environment env{.variable = [this](const char* name) { return variables[name]; },
                    .in = &in,
                    .columns = [] { return 80; },
                    .now = [this] { return Environment::Time(clock.now()); },
                    .systemConfigFolder = "/nowhere"};
    std::map<std::string, std::string> variables{{"XDG_STATE_HOME", state.path()}};
    std::istringstream in;
    bool interruptBeforeCommands = false; ///< as by a signal
    StopRequest stop;
    TemporaryFolder folder{placeInMemory()};
    VirtualClock clock;
    std::unique_ptr<SimulatedBus> bus;
    std::ostringstream out;
    std::ostringstream err;
    FakeSleepInhibitor sleep;

    FakeShell shell;
    FakePrivilegedRun privileged;

private:
    FakeSystemVersion version;
};

} // namespace vornadel::test
