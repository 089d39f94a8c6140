#include "cli/ConsoleReporter.h"
#include "cli/Json.h"
#include "cli/LogFile.h"
#include "config/Version.h"
#include "standins/sim/DemoImage.h"
#include "tests/cli/Session.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <functional>
#include <regex>
#include <sstream>
#include <string>

namespace vornadel::test
{

namespace
{

using namespace std::chrono_literals;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

/// A reporter on a clock, and what it has printed.
struct Screen {
    explicit Screen(Progress progress)
        : console(text, text, text, clock, {progress, [this] { return columns; }})
    {
    }

    std::string printed() const { return text.str(); }

    int columns = 80;
    VirtualClock clock;
    std::ostringstream text;
    ConsoleReporter console;
};

TEST(Bar, FitsTheTerminalAlsoWhenThatChanges)
{
    Screen screen(Progress::Bar);
    FlowReporter& flow = screen.console;
    flow.started({FlowKind::Update, "a.bin", 8192});
    flow.stepStarted(Step::Write);
    for (const int columns : {200, 40, 12, 3, 1, 0}) {
        screen.columns = columns;
        screen.text.str({});
        for (const auto waited : {0s, 1s, 100s}) {
            flow.waiting(waited);
            flow.progressed(static_cast<std::int32_t>(8192 - columns), 8192);
        }
        std::istringstream drawn(screen.printed().substr(1));
        for (std::string line; std::getline(drawn, line, '\r');) {
            EXPECT_LT(line.size(), columns > 0 ? columns : 80) << line;
        }
    }
    EXPECT_THAT(screen.printed(), HasSubstr("] "));
    EXPECT_THAT(screen.printed(), HasSubstr("% waiting 100 s"));
}

TEST(Bar, LeavesNothingOfALongerLine)
{
    Screen screen(Progress::Bar);
    FlowReporter& flow = screen.console;
    flow.started({FlowKind::Update, "a.bin", 8192});
    flow.stepStarted(Step::Write);
    flow.waiting(12s);
    screen.text.str({});
    flow.progressed(4096, 8192);
    EXPECT_EQ(screen.printed(), "\r[" + std::string(10, '#') + std::string(40, ' ') + "]  20%" +
                                    std::string(13, ' '));
    flow.finished({.step = Step::Write, .cause = Cause::RequestFailed});
    EXPECT_THAT(screen.printed(), HasSubstr(" \nFail to Write Flash\n")) << "on a line of its own";
}

TEST(Plain, IsALineForEachStepAndOneAfterFiveSecondsOfSilence)
{
    Screen screen(Progress::Plain);
    FlowReporter& flow = screen.console;
    flow.started({FlowKind::Update, "a.bin", 8192});
    flow.stepStarted(Step::Write);
    screen.text.str({});
    flow.progressed(2048, 8192);
    screen.clock.sleep(4999ms);
    flow.progressed(4096, 8192);
    EXPECT_THAT(screen.printed(), IsEmpty());
    screen.clock.sleep(1ms);
    flow.waiting(5s);
    flow.progressed(8192, 8192);
    EXPECT_EQ(screen.printed(), "waiting for the hub, 5 s\n");
    screen.clock.sleep(5s);
    flow.stepStarted(Step::Read);
    flow.progressed(8192, 8192);
    EXPECT_EQ(screen.printed(), "waiting for the hub, 5 s\nRead Flash...\n");
}

TEST(NoProgress, TellsOnlyHowAFlowEnds)
{
    Session session("latency=none");
    CommandLine line =
        session.line("update", session.folder.write("new.bin", demoImage(kDemoVersion101)));
    line.noBackup = true;
    line.progress = "none";
    EXPECT_EQ(session.run(line, true), kExitSuccess);
    EXPECT_EQ(session.out.str(), "FW:" + line.image + "(size=32768)\n\nUpdate FW Success\n");
    line.quiet = true;
    EXPECT_EQ(session.run(line, true), kExitSuccess);
    EXPECT_EQ(session.out.str() + session.err.str(), "");
    line = session.line("list");
    line.quiet = true;
    EXPECT_EQ(session.run(line), kExitSuccess);
    EXPECT_THAT(session.out.str(), StartsWith("sim-1")) << "a result, not a word";
}

TEST(Colors, AreOfFailuresOnTerminals)
{
    const std::string red =
        "\x1b[31mno attached hub matches; these are attached: [no-match]\x1b[0m\n";
    const struct {
        std::string color;
        bool terminal;
        std::string noColor;
        bool painted;
    } rows[] = {
        {"auto", true, "", true},     {"auto", false, "", false}, {"auto", true, "1", false},
        {"always", false, "1", true}, {"never", true, "", false},
    };
    for (const auto& row : rows) {
        Session session;
        session.selector.serialNumber = "other";
        session.env.errIsTerminal = row.terminal;
        session.variables["NO_COLOR"] = row.noColor;
        CommandLine line = session.line("info");
        line.color = row.color;
        EXPECT_EQ(session.run(line), kExitNoHub);
        EXPECT_EQ(session.err.str().starts_with(red), row.painted) << session.err.str();
        EXPECT_THAT(session.err.str(), HasSubstr("\n  hub:  not asked\n"));
    }
}

TEST(Notes, AreShownOnDemandAndNotAsFailures)
{
    Session session("latency=none");
    session.sleep.problem = "no logind";
    CommandLine line = session.line("erase");
    line.color = "always";
    EXPECT_EQ(session.run(line), kExitSuccess);
    EXPECT_EQ(session.err.str(), "");
    line.verbose = 1;
    EXPECT_EQ(session.run(line), kExitSuccess);
    EXPECT_EQ(session.err.str(), "the machine may go to sleep: no logind\n");
}

TEST(AnyCommand, KeepsControlCharactersOfDevicesFromTheTerminal)
{
    Session session;
    session.selector.serialNumber = "\x1b[2J";
    EXPECT_EQ(session.update("\x1b]0;title\x07"), kExitImageRefused);
    EXPECT_THAT(session.err.str(), StartsWith("?]0;title?: "));
    EXPECT_THAT(session.err.str(), Not(HasSubstr("\x1b")));
}

TEST(LogFile, TellsWhatACommandDid)
{
    Session session("latency=none,fault=stall@erase");
    CommandLine line = session.line("erase");
    line.typed = {"erase", "--color", "a b"};
    EXPECT_EQ(session.run(line), kExitSuccess) << session.err.str();
    const std::string name = "vornadel/vornadelctl.log";
    std::string log = session.state.text(name);
    EXPECT_THAT(log, StartsWith("1970-01-01T00:00:0"));
    EXPECT_THAT(log, HasSubstr("] vornadelctl 1.02 (" + std::string(kToolCommit) +
                               "): erase --color 'a b'\n"));
    EXPECT_THAT(log, HasSubstr("] configuration: " + session.folder.path("config.ini")));
    EXPECT_THAT(log, HasSubstr("] Erase Flash...\n"));
    EXPECT_THAT(log, EndsWith("] ended with 0\n"));
    EXPECT_THAT(log, Not(HasSubstr("read status"))) << log;

    line.json = true;
    EXPECT_EQ(session.run(line), kExitSuccess);
    EXPECT_THAT(session.state.text(name), HasSubstr("] step: restart\n"));
    line.json = false;
    line.image = "/nowhere";
    line.verb = verbCalled("update");
    line.verbose = 2;
    EXPECT_EQ(session.run(line), kExitImageRefused);
    EXPECT_THAT(session.err.str(), EndsWith("\n  log:  " + session.state.path(name) + '\n'));
    EXPECT_THAT(session.state.text(name), EndsWith("] ended with 6 [image-unreadable]\n"));
    line = session.line("info");
    line.verbose = 2;
    EXPECT_EQ(session.run(line), kExitSuccess);
    log = session.state.text(name);
    EXPECT_TRUE(std::regex_search(log, std::regex("status.*: 0\n"))) << log;
}

TEST(LogFile, IsBegunAnewWhenItIsLarge)
{
    Session session;
    CommandLine line = session.line("info");
    line.logFile = session.folder.write("my.log", std::string((1 << 20) - 1, '\n'));
    EXPECT_EQ(session.run(line), kExitSuccess);
    EXPECT_FALSE(std::filesystem::exists(line.logFile + ".1"));
    EXPECT_EQ(session.run(line), kExitSuccess);
    EXPECT_GT(session.folder.text("my.log.1").size(), 1U << 20);
    EXPECT_LT(session.folder.text("my.log").size(), 1000U);
}

TEST(LogFile, ThatIsNamedMustBeUsable)
{
    Session session;
    CommandLine line = session.line("info");
    line.logFile = session.folder.path();
    EXPECT_EQ(session.run(line), kExitUsage);
    EXPECT_EQ(session.told(), "--log-file: " + line.logFile + ": Is a directory\n");
    EXPECT_EQ(session.hub().requestCount(), 0U);
}

TEST(Version, NamesTheConfigurationThatIsTaken)
{
    Session session;
    const std::string ids =
        "[Support Vid Pid]\nVID_00 = 0x1209\nSSPID_00 = 0x0001\nHSPID_00 = 0x0002\n";
    CommandLine line = session.line("version");
    EXPECT_EQ(session.run(line), kExitSuccess);
    EXPECT_EQ(session.out.str(), "vornadelctl 1.02 (" + std::string(kToolCommit) + ")\n");
    line.verbose = 1;
    const auto taken = [&] {
        EXPECT_EQ(session.run(line), kExitSuccess);
        std::smatch found;
        const std::string said = session.out.str();
        std::regex_search(said, found, std::regex("configuration: (.*)\n"));
        return found[1].str();
    };
    EXPECT_EQ(taken(), session.folder.path("config.ini") + " (of the bundle)");
    const auto place = [&](const std::string& name) {
        std::filesystem::create_directories(session.state.path(name) + "/vornadel");
        return session.folder.write(name + "/vornadel/config.ini", ids);
    };
    session.env.systemConfigFolder = session.folder.path("etc");
    EXPECT_EQ(taken(), session.folder.path("config.ini") + " (of the bundle)");
    const std::string ofMachine = place("etc");
    EXPECT_EQ(taken(), ofMachine + " (of this machine)");
    session.variables["HOME"] = session.folder.path("home");
    EXPECT_EQ(taken(), ofMachine + " (of this machine)");
    const std::string ofHome = place("home/.config");
    EXPECT_EQ(taken(), ofHome + " (of this user)");
    session.variables["XDG_CONFIG_HOME"] = session.folder.path("xdg");
    EXPECT_EQ(taken(), ofMachine + " (of this machine)");
    const std::string ofUser = place("xdg");
    EXPECT_EQ(taken(), ofUser + " (of this user)");
    session.variables["VORNADEL_CONFIG"] = "/nowhere.ini";
    EXPECT_EQ(taken(), "/nowhere.ini ($VORNADEL_CONFIG)");
    EXPECT_EQ(session.info(), kExitUsage) << "a named one is taken, even if it is missing";
    line.configFile = ofUser;
    EXPECT_EQ(taken(), ofUser + " (--config)");
    line.json = true;
    EXPECT_EQ(session.run(line), kExitSuccess);
    EXPECT_EQ(Json::parse(session.out.str())["config"], ofUser);
}

TEST(Selection, TakesThePathOfTheEnvironmentIfTheCommandLineSelectsNone)
{
    Session session("hubs=2,latency=none");
    session.variables["VORNADEL_PATH"] = "sim-2";
    EXPECT_EQ(session.info(), kExitSuccess);
    EXPECT_EQ(session.hub(1).requestCount(), 0U);
    EXPECT_GT(session.hub(2).requestCount(), 0U);
    EXPECT_EQ(session.info(session.folder.write("new.bin", demoImage())), kExitSuccess)
        << "an image needs no hub";
    session.selector.serialNumber = "SN0001";
    EXPECT_EQ(session.info(), kExitSuccess);
    EXPECT_GT(session.hub(1).requestCount(), 0U);
    session.selector = {};
    session.variables["VORNADEL_PATH"] = "nonsense";
    EXPECT_EQ(session.info(), kExitUsage);
    EXPECT_EQ(session.told(), "$VORNADEL_PATH is no port: nonsense\n");
}

} // namespace

} // namespace vornadel::test
