#include "standins/sim/DemoImage.h"
#include "tests/cli/Session.h"
#include "tests/support/ScriptedBus.h"

#include <nlohmann/json.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace vornadel::test
{

namespace
{

using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

constexpr const char* kRuleForBoth =
    "SUBSYSTEM==\"usb\", ATTR{idVendor}==\"1209\", ATTR{idProduct}==\"0001\"\n"
    "SUBSYSTEM==\"usb\", ATTR{idVendor}==\"1209\", ATTR{idProduct}==\"0002\"\n";

/// A half that may not be opened, alone.
const ScriptedDevice kClosedHalf{.vendorId = 0x1209,
                                 .productId = 1,
                                 .openStatus = UsbOpenStatus::NoAccess,
                                 .place = {{"2-3", 5}, {"1-3", 0}}};

/// The resources as on Linux.
void makeResources(Session& session)
{
    session.folder.write("HubUpdaterDriver.kext/hub-access.rules", "");
    session.env.accessRule = session.folder.path("rule");
}

TEST(Doctor, FindsNothingWrong)
{
    Session session("latency=none");
    makeResources(session);
    session.folder.write("rule", kRuleForBoth);
    EXPECT_EQ(session.run(session.line("doctor")), kExitSuccess) << session.out.str();
    EXPECT_THAT(session.out.str(),
                StartsWith("ok    configuration: " + session.folder.path("config.ini") +
                           " (of the bundle) names 1 hub\n"
                           "ok    USB: 2 devices\n"
                           "ok    hub sim-1: can be opened; flash code 0100\n"
                           "ok    access rule: " +
                           session.env.accessRule + " names every hub of the configuration\n"));
}

TEST(Doctor, SaysWhatIsWrongAndWhatToDo)
{
    Session session;
    makeResources(session);
    ScriptedBus bus;
    bus.attached = {kClosedHalf};
    EXPECT_EQ(session.runOn(bus, session.line("doctor")), kExitNoAccess);
    EXPECT_THAT(session.out.str(),
                AllOf(HasSubstr("\nFAIL  hub 2-3/1-3: permission is missing\n"
                                "      do: rm -rf /tmp/HubUpdaterDriver.kext && cp -R " +
                                session.folder.path() + "/HubUpdaterDriver.kext /tmp && sudo " +
                                session.folder.path() + "/load"),
                      HasSubstr("\nwarn  access rule: " + session.env.accessRule +
                                " is not installed, so only root may open a hub\n")));

    session.folder.write("rule", "SUBSYSTEM==\"usb\", ATTR{idVendor}==\"1209\", "
                                 "ATTR{idProduct}==\"0001\"\n");
    EXPECT_EQ(session.runOn(bus, session.line("access show")), kExitNoAccess);
    EXPECT_THAT(session.out.str(), AllOf(StartsWith("FAIL  hub 2-3/1-3: "),
                                         HasSubstr("\nwarn  hub 2-3/1-3: only its SuperSpeed half "
                                                   "is attached\n"),
                                         HasSubstr("rule does not name 1209:0002\n")));

    CommandLine other = session.line("doctor");
    other.configFile = session.folder.write(
        "other.ini", "[Support Vid Pid]\nVID_00 = 1\nSSPID_00 = 2\nHSPID_00 = 3\n");
    EXPECT_EQ(session.run(other), kExitNoHub);
    EXPECT_THAT(session.out.str(),
                AllOf(HasSubstr("\nFAIL  hubs: no supported hub is attached\n"),
                      HasSubstr("do: name the hubs in " + session.folder.path("config.ini"))));
    other.configFile = session.folder.write("none.ini", "[Support Vid Pid]\n");
    EXPECT_EQ(session.run(other), kExitUsage);
    EXPECT_THAT(session.out.str(), StartsWith("FAIL  configuration: " + other.configFile +
                                              " (--config) names no hub\n"));
    other.configFile = session.folder.path("missing.ini");
    EXPECT_EQ(session.run(other), kExitUsage);
}

TEST(Doctor, NamesTheProcessThatWorksOnAHub)
{
    Session session("latency=none");
    const auto other = session.occupy("sim-1");
    EXPECT_EQ(session.run(session.line("doctor")), kExitSuccess);
    EXPECT_THAT(session.out.str(),
                HasSubstr("\nwarn  hub sim-1: busy: process " + std::to_string(::getpid()) +
                          " works on it\n      do: ps -o pid,user,etime,args -p "));
    EXPECT_EQ(session.hub().requestCount(), 0U);
}

TEST(Doctor, TellsHowTheLastRunEnded)
{
    Session session("latency=none");
    const std::string log = session.state.path("vornadel/vornadelctl.log");
    const CommandLine doctor = session.line("doctor");
    session.run(doctor);
    EXPECT_THAT(session.out.str(), EndsWith("ok    log: " + log + " tells of no earlier run\n"));
    session.run(doctor);
    EXPECT_THAT(session.out.str(), EndsWith("] ended with 0\n"));
    session.read("/dev/full");
    session.run(doctor);
    EXPECT_THAT(session.out.str(), EndsWith("] ended with 1 [file-not-saved]\n"
                                            "      do: tail -n 20 " +
                                            log + '\n'));
    std::filesystem::remove(log);
    std::filesystem::create_directory(log);
    session.run(doctor);
    EXPECT_THAT(session.out.str(), EndsWith("warn  log: " + log + " cannot be written\n" +
                                            "      do: ls -ld " + log + '\n'));
}

TEST(Doctor, PrintsOneObjectForPrograms)
{
    Session session;
    ScriptedBus bus;
    bus.attached = {kClosedHalf};
    CommandLine line = session.line("doctor");
    line.json = true;
    EXPECT_EQ(session.runOn(bus, line), kExitNoAccess);
    const auto object = nlohmann::json::parse(session.out.str());
    EXPECT_EQ(object["exit"], kExitNoAccess);
    EXPECT_EQ(object["findings"][0]["state"], "ok");
    EXPECT_EQ(object["findings"][0]["check"], "configuration");
    EXPECT_TRUE(object["findings"][0]["do"].is_null());
    EXPECT_EQ(object["findings"][2]["state"], "fail");
    EXPECT_THAT(object["findings"][2]["do"].get<std::string>(), EndsWith("/load"));
}

TEST(Access, IsGrantedAndRevokedByTheAdministratorsScripts)
{
    Session session("latency=none,mode=rom");
    session.env.driverCopy = session.folder.path("copy");
    const std::string folder = session.folder.path();
    EXPECT_EQ(session.run(session.line("access grant")), kExitSuccess) << session.err.str();
    EXPECT_THAT(session.shell.commands,
                ElementsAre("cp -R " + folder + "/HubUpdaterDriver.kext /tmp"));
    EXPECT_THAT(session.privileged.scripts, ElementsAre(folder + "/load"));
    EXPECT_TRUE(std::filesystem::is_directory(session.env.driverCopy)) << "nobody else's";

    session.privileged.onStart = [&] {
        EXPECT_EQ(session.hub().runningCode(), HubCode::Flash) << "while it may be opened";
        EXPECT_EQ(session.privileged.holds, 0);
    };
    session.hub().onRequest = [&](const ControlRequest&) {
        EXPECT_EQ(session.privileged.holds, 1);
    };
    EXPECT_EQ(session.run(session.line("access revoke")), kExitSuccess) << session.err.str();
    EXPECT_THAT(session.privileged.scripts, ElementsAre(folder + "/load", folder + "/unload"));
}

TEST(Access, SaysWhyNothingWasGrantedOrRevoked)
{
    Session session("latency=none");
    session.env.driverCopy = session.folder.path("copy");
    const CommandLine grant = session.line("access grant");
    const std::string byHand = "  next: sudo " + session.folder.path() + "/load\n";
    const struct {
        std::optional<int> script;
        int status;
        std::string why;
    } rows[] = {
        {std::nullopt, kExitSuccess, ""}, // a Mac does not tell
        {1, kExitFailure, "load failed with status 1\n"},
        {126, kExitNoAccess, "administrator rights were not given\n"},
        {127, kExitNoAccess, "administrator rights were not given\n"},
    };
    for (const auto& row : rows) {
        session.privileged.status = row.script;
        EXPECT_EQ(session.run(grant), row.status);
        EXPECT_EQ(session.told(), row.why);
        EXPECT_EQ(session.err.str().find(byHand) != std::string::npos, !row.why.empty());
    }
    session.privileged.able = false;
    EXPECT_EQ(session.run(grant), kExitNoAccess);
    session.privileged.scriptAtWork = true;
    EXPECT_EQ(session.run(session.line("access revoke")), kExitFailure);
    EXPECT_EQ(session.told(), "access is being withdrawn already\n");
    EXPECT_EQ(session.hub().requestCount(), 0U);

    session.env.driverCopy = session.folder.write("file", "");
    EXPECT_EQ(session.run(grant), kExitFailure);
    EXPECT_EQ(session.told(), session.env.driverCopy + " is not a folder\n");
    EXPECT_THAT(session.out.str(), IsEmpty());
}

} // namespace

} // namespace vornadel::test
