#include "hub/HubTransport.h"
#include "standins/sim/DemoImage.h"
#include "tests/cli/Session.h"
#include "tests/support/ScriptedBus.h"
#include "tests/support/WithoutPrivilege.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <unistd.h>

namespace vornadel::test
{

namespace
{

using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

TEST(InfoOfTheHub, ShowsTheVersionAndWhichCodeRuns)
{
    for (const std::string mode : {"flash", "rom"}) {
        Session session("mode=" + mode);
        EXPECT_EQ(session.info(), kExitSuccess);
        EXPECT_EQ(session.out.str(), "firmware version: 0100\nrunning:          " +
                                         std::string(mode == "rom" ? "ROM" : "flash") + " code\n");
        EXPECT_THAT(session.told(), IsEmpty());
        EXPECT_FALSE(Hub_IsOpen());
    }
}

TEST(InfoOfTheHub, SaysThatNoneIsAttached)
{
    Session session;
    session.hub().unplug();
    EXPECT_EQ(session.info(), kExitNoHub);
    EXPECT_EQ(session.told(), "no supported hub is attached\n");
    EXPECT_THAT(session.out.str(), IsEmpty());
}

TEST(AnAttachedHub, ThatCannotBeOpenedIsListedWithTheReason)
{
    const struct {
        UsbOpenStatus status;
        int exitStatus;
        std::string why; ///< beginning
        std::string inTheList;
    } rows[] = {
        {UsbOpenStatus::NoAccess, 5, "permission is missing\n", "no access"},
        {UsbOpenStatus::Busy, 11,
         "the hub is busy: another program has it open, or its place cannot be locked\n", "busy"},
        {UsbOpenStatus::Gone, 7, "the hub was unplugged\n", "has left"},
        {UsbOpenStatus::Other, 7, "the system could not open the hub, and gave no reason\n",
         "no answer"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        Session session;
        ScriptedBus bus;
        bus.attached = {{0x1209, 0x0001, row.status}};
        EXPECT_EQ(session.runOn(bus, session.line("info")), row.exitStatus);
        EXPECT_THAT(session.told(), StartsWith(row.why));
        EXPECT_THAT(session.out.str(), IsEmpty());
        EXPECT_EQ(session.runOn(bus, session.line("list")), kExitSuccess);
        EXPECT_EQ(session.out.str(), "-  1209:0001/-  -  -  " + row.inTheList + '\n');
        EXPECT_THAT(session.told(), IsEmpty());
    }
}

TEST(AnAttachedHub, WithoutPermissionNamesTheCommandThatGrantsIt)
{
    Session session;
    ScriptedBus bus;
    bus.attached = {{0x1209, 0x0001, UsbOpenStatus::NoAccess}};
    EXPECT_EQ(session.runOn(bus, session.line("erase")), kExitNoAccess);
    EXPECT_THAT(session.err.str(),
                HasSubstr("\npermission is missing [no-access]\n"
                          "  hub:  unchanged; plug it in again after the next command\n"
                          "  next: rm -rf /tmp/HubUpdaterDriver.kext && cp -R " +
                          session.folder.path("HubUpdaterDriver.kext") + " /tmp && sudo " +
                          session.folder.path("load") + '\n'));
}

TEST(AnAttachedHub, ThatDoesNotAnswerIsListedAllTheSame)
{
    for (const auto& [fault, why] :
         {std::pair("fault=stall@status#1", "the hub refused the request (stall)\n"),
          std::pair("fault=vanish-before@status#1", "the hub was unplugged\n")}) {
        SCOPED_TRACE(fault);
        Session session(fault);
        EXPECT_EQ(session.info(), kExitTransferFailed);
        EXPECT_EQ(session.told(), why);
        EXPECT_THAT(session.out.str(), IsEmpty());
        EXPECT_FALSE(Hub_IsOpen());
    }
    Session session("fault=stall@status#1");
    EXPECT_EQ(session.list(), kExitSuccess);
    EXPECT_EQ(session.out.str(), "sim-1  1209:0001/0002  SN0001  Demo Hub  no answer\n");
}

TEST(InfoOfAllHubs, FailsIfOneDoesNotAnswer)
{
    Session session("hubs=2");
    CommandLine line = session.line("info");
    line.all = true;
    EXPECT_EQ(session.run(line), kExitSuccess) << session.err.str();
    const std::string second = "sim-2  1209:0001/0002  SN0002  Demo Hub  0100  flash code\n";
    EXPECT_EQ(session.out.str(),
              "sim-1  1209:0001/0002  SN0001  Demo Hub  0100  flash code\n" + second);
    const auto lock = session.occupy("sim-1");
    EXPECT_EQ(session.run(line), kExitSomeFailed);
    EXPECT_THAT(session.out.str(), EndsWith('\n' + second)) << "the others are asked all the same";
    EXPECT_THAT(session.err.str(),
                StartsWith("1 of 2 hubs did not answer [some-failed]\n  hub:  unchanged\n"));
}

TEST(InfoOfAnImage, ShowsItsFields)
{
    Session session;
    const std::string file = session.folder.write("new.bin", demoImage(kDemoVersion101));
    EXPECT_EQ(session.info(file), kExitSuccess);
    EXPECT_EQ(session.out.str(), "file:          " + file +
                                     "\n"
                                     "size:          32768 bytes\n"
                                     "block at:      0x7E00\n"
                                     "version:       0101\n"
                                     "VID:           1209\n"
                                     "SSPID:         0001\n"
                                     "HSPID:         0002\n"
                                     "manufacturer:  Vornadel\n"
                                     "product:       Demo Hub\n"
                                     "serial number: SN0001\n"
                                     "container ID:  {5d0fc271-3a94-4e6b-9c18-27b0e463d108}\n");
    EXPECT_THAT(session.told(), IsEmpty());
    const std::string ofFile = session.out.str();
    const std::vector<std::uint8_t> bytes = demoImage(kDemoVersion101);
    session.in.str(std::string(bytes.begin(), bytes.end()));
    EXPECT_EQ(session.info("-"), kExitSuccess);
    EXPECT_EQ(session.out.str(),
              "file:          standard input\n" + ofFile.substr(ofFile.find('\n') + 1));
    EXPECT_EQ(session.hub().requestCount(), 0U);
}

TEST(InfoOfAnImage, ShowsADashForAVersionThatIsNotThere)
{
    Session session;
    const std::vector<std::uint8_t> whole = demoImage();
    const std::vector<std::uint8_t> block(whole.end() - 512, whole.end() - 256);
    EXPECT_EQ(session.info(session.folder.write("block.bin", block)), kExitSuccess);
    EXPECT_THAT(session.out.str(), HasSubstr("\nblock at:      0x0000\nversion:       -\n"));
}

TEST(InfoOfAnImage, KeepsControlCharactersFromTheTerminal)
{
    Session session;
    std::vector<std::uint8_t> image = demoImage();
    const std::string planted = "\x1b~ J\x7F\x9b\r\n"; // in place of "Vornadel"
    std::copy(planted.begin(), planted.end(), image.end() - 512 + 43 + 2);
    EXPECT_EQ(session.info(session.folder.write("planted.bin", image)), kExitSuccess);
    EXPECT_THAT(session.out.str(), HasSubstr("\nmanufacturer:  ?~ J????\n"));
}

TEST(InfoOfAnImage, RefusesWhatIsNone)
{
    Session session;
    const std::string files[] = {
        session.folder.write("short.bin", std::string(255, 'x')),
        session.folder.write("noblock.bin", std::vector<std::uint8_t>(32768, 0xFF)),
    };
    for (const std::string& file : files) {
        SCOPED_TRACE(file);
        EXPECT_EQ(session.info(file), kExitImageRefused);
        EXPECT_EQ(session.told(), file + ": Firmware format error\n");
        EXPECT_THAT(session.out.str(), IsEmpty());
    }
}

TEST(InfoOfAnImage, SaysWhyAFileWasNotRead)
{
    Session session;
    const struct {
        std::string file;
        std::string why;
    } rows[] = {
        {session.folder.path("missing.bin"), "No such file or directory"},
        {session.folder.path(), "it is a folder"},
        {"/dev/null", "it is not a regular file"},
        {session.folder.write("empty.bin", std::string()), "it is empty"},
        {session.folder.write("large.bin", std::string()), "it cannot be read, or is too large"},
        {session.folder.write("closed.bin", "x"), "Permission denied"},
    };
    std::filesystem::resize_file(rows[4].file, 1ULL << 31);
    std::filesystem::permissions(rows[5].file, std::filesystem::perms::none);
    const WithoutPrivilege nobody;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.file);
        EXPECT_EQ(session.info(row.file), kExitImageRefused);
        EXPECT_EQ(session.told(), row.file + ": " + row.why + '\n');
        EXPECT_THAT(session.out.str(), IsEmpty());
    }
}

TEST(List, ShowsEachHubInOneLine)
{
    Session session("hubs=3,mode=2:rom,latency=none");
    session.hub(3).setFlash(std::vector<std::uint8_t>(32768, 0xFF));
    session.hub(3).unplug();
    session.hub(3).replug();
    const auto busy = session.occupy("sim-1");
    EXPECT_EQ(session.list(), kExitSuccess);
    const std::string pid = std::to_string(::getpid());
    EXPECT_EQ(session.out.str(), "sim-1  1209:0001/0002  SN0001  Demo Hub  busy (pid " + pid +
                                     ")\n"
                                     "sim-2  1209:0001/0002  SN0002  Demo Hub  0100  ROM code\n"
                                     "sim-3  1209:0001/0002  -       -         0001  ROM code\n");
    EXPECT_EQ(session.hub().requestCount(), 0U);
    session.hub(1).unplug();
    EXPECT_EQ(session.list(), kExitSuccess);
    EXPECT_THAT(session.out.str(), HasSubstr("\nsim-1  -               -       -         busy "))
        << "away for its restart";
    const auto alsoBusy = session.occupy("sim-3");
    EXPECT_EQ(session.list(), kExitSuccess);
    EXPECT_THAT(session.out.str(), HasSubstr("\nsim-3  1209:0001/0002  -       -         busy "));
}

TEST(List, ShowsTheOnlyHubThatIsAway)
{
    Session session;
    const auto busy = session.occupy("sim-1");
    session.hub().unplug();
    EXPECT_EQ(session.list(), kExitSuccess) << session.told();
    EXPECT_THAT(session.out.str(), StartsWith("sim-1  -  -  -  busy "));
}

TEST(List, ShowsOnlyTheSelectedHubs)
{
    Session session("hubs=3,latency=none");
    session.selector.serialNumber = "SN0002";
    EXPECT_EQ(session.list(), kExitSuccess);
    EXPECT_EQ(session.out.str(), "sim-2  1209:0001/0002  SN0002  Demo Hub  0100  flash code\n");
    session.selector.serialNumber = "SN000";
    EXPECT_EQ(session.list(), kExitNoHub);
    EXPECT_EQ(session.told(), "no attached hub matches\n");
    EXPECT_EQ(session.hub(1).requestCount() + session.hub(3).requestCount(), 0U);
}

TEST(List, ShowsEveryDeviceOnDemand)
{
    Session session;
    ScriptedBus bus;
    bus.attached = {
        {.vendorId = 0x1d6b, .productId = 3, .place = {{"usb2", 1}, {}}, .texts = {"xHCI\n", ""}},
        {.vendorId = 0x1209, .productId = 1, .place = {{"2-1", 2}, {"1-1", 0}}},
        {.vendorId = 0x1234, .productId = 1},
        {.step = UsbSearch::Step::NoPlugIn},
    };
    CommandLine line = session.line("list");
    line.all = true;
    EXPECT_EQ(session.runOn(bus, line), kExitSuccess);
    EXPECT_EQ(session.out.str(), "usb2  1D6B:0003  xHCI?\n2-1   1209:0001  -      supported hub\n"
                                 "-     1234:0001  -\n");
    EXPECT_THAT(bus.requests(), IsEmpty());
    const std::vector<std::string> events = bus.events();
    EXPECT_EQ(std::count(events.begin(), events.end(), "search"),
              std::count(events.begin(), events.end(), "end of list"));
}

TEST(List, AsksNoHubWhosePlaceIsNotKnownIfAnotherCouldAnswer)
{
    Session session;
    ScriptedBus bus;
    bus.attached = {{.vendorId = 0x1209, .productId = 1, .texts = {"Hub", "1"}},
                    {.vendorId = 0x1209, .productId = 1, .texts = {"Hub", "2"}}};
    EXPECT_EQ(session.runOn(bus, session.line("list")), kExitSuccess);
    EXPECT_EQ(session.out.str(), "-  1209:0001/-  1  Hub\n-  1209:0001/-  2  Hub\n");
    EXPECT_THAT(bus.requests(), IsEmpty());
}

TEST(AnyCommand, FailsIfItsOutputCannotBeWrittenOnlyIfThatIsItsResult)
{
    Session session("latency=none");
    const std::string image = session.folder.write("new.bin", demoImage(kDemoVersion101));
    session.folder.write("config.ini", session.folder.text("config.ini") +
                                           "[DumpTool Config]\nFwBin = new.bin\n");
    for (const auto& [verb, file, status] :
         {std::tuple("update", image, 0), std::tuple("scalar", std::string(), 0),
          std::tuple("read", session.folder.path("read.bin"), 0),
          std::tuple("info", std::string(), 1), std::tuple("info", image, 1),
          std::tuple("list", std::string(), 1), std::tuple("erase", std::string(), 0)}) {
        session.out.setstate(std::ios::badbit); // as on a full disk
        EXPECT_EQ(session.run(session.line(verb, file)), status);
        EXPECT_EQ(session.told(), status == 0 ? "" : "the output could not be written\n");
        session.out.clear();
    }
}

TEST(List, LocksNoHub)
{
    Session session;
    ScriptedBus bus;
    bus.attached = {{.vendorId = 0x1209, .productId = 1, .place = {{"2-1", 5}, {"1-1", 6}}}};
    bus.onControl([&](ControlRequest&) {
        EXPECT_THAT(bus.placeLocks().owners(), IsEmpty());
        return 0U;
    });
    EXPECT_EQ(session.runOn(bus, session.line("list")), kExitSuccess);
    EXPECT_THAT(session.out.str(), EndsWith("  0000  ROM code\n"));
    bus.forgetHooks();
}

TEST(AnyCommand, RefusesAConfigFileThatCannotBeUsed)
{
    Session session;
    const struct {
        std::string file;
        std::string why;
    } rows[] = {
        {session.folder.path("missing.ini"), "iniparser: cannot open "},
        {session.folder.path(), "is not a regular file"},
        {session.folder.write("large.ini", std::string(64 * 1024 + 1, '\n')), "larger than 64 KiB"},
        {session.folder.write("wrong.ini", "[a]\nno key\n[b\n"), "syntax error in "},
        {session.folder.write("none.ini", "[DumpTool Config]\n"), "names no supported hub"},
    };
    const std::string image = session.folder.write("new.bin", demoImage(kDemoVersion101));
    for (const auto& row : rows) {
        SCOPED_TRACE(row.file);
        for (const std::string verb : {"list", "update", "info"}) {
            CommandLine line = session.line(verb, verb == "update" ? image : "");
            line.configFile = row.file;
            EXPECT_EQ(session.run(line), kExitUsage);
            EXPECT_THAT(session.told(), HasSubstr(row.file));
            EXPECT_THAT(session.told(), HasSubstr(row.why));
            const std::string said = session.told();
            EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1);
            EXPECT_THAT(session.out.str(), IsEmpty());
        }
    }
    EXPECT_EQ(session.hub().requestCount(), 0U);
}

TEST(AnyCommand, RefusesOptionsThatDoNotFit)
{
    Session session;
    session.selector.path = "sim-1";
    EXPECT_EQ(session.info("a.bin"), kExitUsage);
    EXPECT_EQ(session.told(), "info IMAGE asks no hub, so none can be selected\n");
    CommandLine line = session.line("list");
    line.all = true;
    EXPECT_EQ(session.run(line), kExitUsage);
    EXPECT_EQ(session.told(), "list --all lists every device, so no hub can be selected\n");
}

TEST(List, FailsWithoutUsb)
{
    Session session;
    ScriptedBus bus;
    bus.givesList = false;
    EXPECT_EQ(session.runOn(bus, session.line("list")), kExitNoHub);
    EXPECT_EQ(session.told(), "the USB devices cannot be listed\n");
    bus.onSearch([&] { bus.givesList = !bus.givesList; }); // gives the first, not the second
    EXPECT_EQ(session.runOn(bus, session.line("list")), kExitNoHub);
    EXPECT_EQ(session.told(), "the system lists no USB device, not even a root hub\n");
    bus.forgetHooks();
    bus.givesList = true;
    bus.attached = {{.step = UsbSearch::Step::NoPlugIn}, {.step = UsbSearch::Step::NoInterface}};
    EXPECT_EQ(session.runOn(bus, session.line("list")), kExitNoHub);
    EXPECT_EQ(session.told(), "the system lists no USB device, not even a root hub\n");
}

TEST(List, TellsProgramsWhichCodeRuns)
{
    for (const std::string code : {"rom", "flash"}) {
        Session session("mode=" + code);
        CommandLine line = session.line("list");
        line.json = true;
        EXPECT_EQ(session.run(line), kExitSuccess);
        EXPECT_THAT(session.out.str(), HasSubstr("\"running\": \"" + code + '"'));
    }
}

} // namespace

} // namespace vornadel::test
