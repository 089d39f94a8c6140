#include "cli/Failures.h"
#include "standins/sim/DemoImage.h"
#include "tests/cli/Session.h"
#include "tests/support/ScriptedBus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <regex>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace vornadel::test
{

namespace
{

TEST(Messages, AreThoseInTheDocumentation)
{
    std::vector<std::string> documented;
    std::ifstream page(MESSAGES_PAGE);
    for (std::string line; std::getline(page, line);) {
        std::smatch cells;
        if (std::regex_match(line, cells,
                             std::regex(R"((\| `[a-z-]+` \| [0-9]+ \| .+ \| `.+` \|) .+ \|)"))) {
            documented.push_back(cells[1]);
        }
    }
    std::vector<std::string> known;
    for (const FailureKind& kind : allFailureKinds()) {
        known.push_back("| `" + std::string(kind.name) + "` | " + std::to_string(kind.status) +
                        " | " + kind.state + " | `" + kind.next + "` |");
    }
    EXPECT_THAT(documented, testing::UnorderedElementsAreArray(known));
}

/// A way to fail.
struct Way {
    std::string id;
    std::string hub; ///< options of the simulated hub
    std::string verb;
    std::string file{}; ///< "new.bin" is an image
    std::function<void(Session&, CommandLine&)> before = [](Session&, CommandLine&) {};
};

const std::vector<Way>& waysOnSimulatedHubs()
{
    static const std::vector<Way> ways = {
        {"internal", "", "info", "",
         [](Session& session, CommandLine&) {
             session.env.variable = [&](const char* name) {
                 return std::string(name) == "VORNADEL_PATH" ? throw std::runtime_error("no memory")
                                                             : session.variables[name];
             };
         }},
        {"output-not-written", "", "list", "",
         [](Session& session, CommandLine&) { session.out.setstate(std::ios::badbit); }},
        {"file-not-saved", "", "read", "/nowhere/else"},
        {"file-exists", "", "read", "new.bin",
         [](Session&, CommandLine& line) { line.force = false; }},
        {"backup-not-saved", "latency=none", "erase", "",
         [](Session&, CommandLine& line) { line.backupFolder = "/dev/null/none"; }},
        {"no-backup", "latency=none", "restore"},
        {"not-agreed", "", "erase", "", [](Session&, CommandLine& line) { line.yes = false; }},
        {"usage", "", "list", "",
         [](Session&, CommandLine& line) {
             line.all = true;
             line.hub.path = "sim-1";
         }},
        {"config-unusable", "", "info", "",
         [](Session&, CommandLine& line) { line.configFile = "/nowhere"; }},
        {"simulated-hub", "", "info", "",
         [](Session&, CommandLine& line) { line.simulatedHubProblem = "no such option"; }},
        {"log-unusable", "", "info", "", [](Session&, CommandLine& line) { line.logFile = "/"; }},
        {"no-hub", "ids=1234:5678:9abc", "info"},
        {"no-match", "", "info", "",
         [](Session&, CommandLine& line) { line.hub.serialNumber = "other"; }},
        {"several-hubs", "hubs=2", "info"},
        {"busy", "fault=open-refused:100000", "info"},
        {"some-failed", "hubs=2,fault=stall@status#1", "info", "",
         [](Session&, CommandLine& line) { line.all = true; }},
        {"image-unreadable", "", "update", "/nowhere"},
        {"image-refused", "", "update", "config.ini"},
        {"definitions-unusable", "", "image properties", "new.bin",
         [](Session&, CommandLine& line) { line.definitions = "/nowhere"; }},
        {"unplugged", "fault=vanish-before@write#2", "update", "new.bin"},
        {"stalled", "fault=stall@write#2", "update", "new.bin"},
        {"short-transfer", "fault=torn:5@write#2", "update", "new.bin"},
        {"not-restarted", "fault=ignore@rom", "update", "new.bin"},
        {"not-returned", "fault=never@1", "update", "new.bin"},
        {"another-hub", "hubs=2,fault=swapped@1", "update", "new.bin",
         [](Session&, CommandLine& line) { line.hub.path = "sim-1"; }},
        {"no-rom-code", "fault=same-mode@1", "update", "new.bin"},
        {"flash-differs", "fault=flip@write#2", "update", "new.bin"},
        {"not-blank", "fault=ignore@erase", "erase"},
        {"unstable-reads", "fault=flip@read#9", "read", "saved.bin"},
        {"not-back", "fault=never@2", "update", "new.bin"},
        {"still-rom-code", "fault=same-mode@2", "update", "new.bin"},
        {"other-version", "latency=none", "update", "new.bin",
         [](Session& session, CommandLine&) {
             session.hub().onRequest = [&hub = session.hub()](const ControlRequest& request) {
                 const bool restarts = !request.fromDevice() && request.out.empty();
                 if (restarts && hub.flash() == demoImage(kDemoVersion101)) {
                     hub.setFlash(demoImage());
                 }
             };
         }},
        {"locked", "", "image set", "new.bin",
         [](Session& session, CommandLine& line) {
             line.definitions = DEMO_DEFINITIONS;
             line.output = session.folder.path("set.bin");
             line.words = {"SSC Enable=0 : Disable", "SSC Mode=Automatic"};
         }},
        {"config-full", "ids=1209:0005:0002", "update", "new.bin",
         [](Session& session, CommandLine&) {
             std::string config = "[Support Vid Pid]\n";
             for (const char high : std::string("0123")) {
                 for (const char low : std::string("0123456789abcdef")) {
                     const std::string row{'_', high, low};
                     config.append("VID").append(row).append(" = 0x1209\nSSPID");
                     config.append(row).append(" = 5\nHSPID").append(row).append(" = 2\n");
                 }
             }
             session.folder.write("config.ini", config);
         }},
        {"no-administrator", "", "access revoke", "",
         [](Session& session, CommandLine&) { session.privileged.able = false; }},
        {"access-unchanged", "", "access revoke", "",
         [](Session& session, CommandLine&) { session.privileged.status = 1; }},
        {"interrupted", "", "update", "new.bin",
         [](Session& session, CommandLine&) { session.stop.ask(); }},
    };
    return ways;
}

/// Runs a command on a bus; the exit status and the id that it tells.
std::pair<int, std::string> failedOn(Session& session, UsbBus& bus, const CommandLine& line)
{
    const int status = session.runOn(bus, line);
    const std::string said = session.err.str();
    std::smatch found;
    const bool told = std::regex_search(
        said, found,
        std::regex(R"( \[([a-z-]+)\]\n([^ ].*\n)*  hub:  .+\n  next: .+\n  log:  .+\n)"));
    EXPECT_TRUE(told) << said;
    return {status, told ? found[1].str() : std::string()};
}

TEST(Messages, CanHappenOnSimulatedHubsAndEndWithTheirStatus)
{
    for (const Way& way : waysOnSimulatedHubs()) {
        SCOPED_TRACE(way.id);
        Session session(way.hub.empty() ? "latency=none" : way.hub);
        session.folder.write("new.bin", demoImage(kDemoVersion101));
        CommandLine line = session.line(way.verb, way.file);
        if (!way.file.empty() && way.file[0] != '/') {
            line.image = session.folder.path(way.file);
        }
        way.before(session, line);
        const auto [status, id] = failedOn(session, *session.bus, line);
        EXPECT_EQ(id, way.id) << session.err.str();
        for (const FailureKind& kind : allFailureKinds()) {
            EXPECT_TRUE(kind.name != way.id || kind.status == status) << status;
        }
        session.out.clear();
    }
}

/// Every request to the only hub fails.
void fails(ScriptedBus& bus, UsbFailure failure)
{
    bus.attached = {{.vendorId = 0x1209, .productId = 1, .failure = failure}};
    bus.onControl([](ControlRequest&) { return 1U; });
}

TEST(Messages, CanHappenOnTheMachinesBusAndEndWithTheirStatus)
{
    const UsbPlace place{{"2-1", 5}, {"1-1", 6}};
    const struct {
        std::string id;
        int status;
        std::function<void(ScriptedBus& bus)> prepare;
    } rows[] = {
        {"no-usb-list", kExitNoHub, [](ScriptedBus& bus) { bus.givesList = false; }},
        {"places-unknown", kExitSeveralHubs,
         [](ScriptedBus& bus) {
             bus.attached = {{.vendorId = 0x1209, .productId = 1, .texts = {"Hub", "1"}},
                             {.vendorId = 0x1209, .productId = 1, .texts = {"Hub", "2"}}};
         }},
        {"no-access", kExitNoAccess,
         [](ScriptedBus& bus) {
             bus.attached = {{0x1209, 0x0001, UsbOpenStatus::NoAccess}};
         }},
        {"open-failed", kExitTransferFailed,
         [](ScriptedBus& bus) {
             bus.attached = {{0x1209, 0x0001, UsbOpenStatus::Other}};
         }},
        {"timed-out", kExitTransferFailed,
         [](ScriptedBus& bus) { fails(bus, UsbFailure::TimedOut); }},
        {"request-failed", kExitTransferFailed,
         [](ScriptedBus& bus) { fails(bus, UsbFailure::Other); }},
        {"in-use", kExitFailure,
         [&](ScriptedBus& bus) {
             bus.attached = {
                 {.vendorId = 0x1209, .productId = 1, .place = place, .below = {"keyboard"}}};
         }},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.id);
        Session session;
        ScriptedBus bus;
        row.prepare(bus);
        CommandLine line = session.line("erase");
        line.refuseInUse = true;
        line.hub.serialNumber = row.id == "places-unknown" ? "1" : "";
        EXPECT_EQ(failedOn(session, bus, line), std::pair(row.status, row.id));
    }
}

} // namespace

} // namespace vornadel::test
