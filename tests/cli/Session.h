#pragma once

#include "cli/Commands.h"
#include "hub/HubTransport.h"
#include "platform/Platform.h"
#include "standins/sim/SimulatedBus.h"
#include "tests/support/FakeMachine.h"
#include "tests/support/HubGuard.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/VirtualClock.h"

#include <gtest/gtest.h>

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
        Platform platform{other, shell, privileged, version, clock};
        Hub_UsePlatform(other, clock);
        if (interruptBeforeCommands) {
            Hub_Abandon();
        }
        return runCommand(commandLine, platform, folder.path(), out, err, terminal, stop);
    }

    // On the hub that `selector` selects:
    int update(const std::string& image, bool terminal = false)
    {
        return run(line(CommandLine::Verb::Update, image), terminal);
    }
    int read(const std::string& file) { return run(line(CommandLine::Verb::Read, file)); }
    int erase() { return run(line(CommandLine::Verb::Erase)); }
    int info(const std::string& image = {}) { return run(line(CommandLine::Verb::Info, image)); }
    int list() { return run(line(CommandLine::Verb::List)); }

    CommandLine line(CommandLine::Verb verb, const std::string& image = {}) const
    {
        return {
            .verb = verb, .image = image, .configFile = {}, .simulatedHub = {}, .hub = selector};
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
    bool interruptBeforeCommands = false; ///< as by a signal
    StopRequest stop;
    TemporaryFolder folder;
    VirtualClock clock;
    std::unique_ptr<SimulatedBus> bus;
    std::ostringstream out;
    std::ostringstream err;

private:
    FakeShell shell;
    FakePrivilegedRun privileged;
    FakeSystemVersion version;
};

} // namespace vornadel::test
