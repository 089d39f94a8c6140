#include "hub/HubTransport.h"
#include "standins/sim/DemoImage.h"
#include "tests/cli/Session.h"
#include "tests/support/FullDisk.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

namespace vornadel::test
{

namespace
{

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

std::size_t filesIn(const TemporaryFolder& folder)
{
    const fs::directory_iterator begin(folder.path());
    return static_cast<std::size_t>(std::distance(begin, fs::directory_iterator()));
}

TEST(Read, SavesTheWholeFlashAndTellsEachStepOnALineOfItsOwn)
{
    Session session("latency=none");
    const std::string file = session.folder.path("read.bin");
    EXPECT_EQ(session.read(file), kExitSuccess);
    EXPECT_EQ(session.out.str(), "Open Device...\n"
                                 "Reading Flash...\n"
                                 "Reset to Flash Code...\n"
                                 "Read Fw Success\n"
                                 "Saved 32768 bytes to " +
                                     file + '\n');
    EXPECT_THAT(session.told(), IsEmpty());
    EXPECT_EQ(session.folder.read("read.bin"), demoImage());
    EXPECT_EQ(session.hub().flash(), demoImage());
    EXPECT_EQ(session.hub().runningCode(), HubCode::Flash);
    EXPECT_FALSE(Hub_IsOpen());
}

TEST(Read, TellsThatTheHubIsBusy)
{
    Session session("fault=open-refused:100000");
    EXPECT_EQ(session.read(session.folder.path("read.bin")), kExitBusy);
    EXPECT_EQ(session.out.str(), "Open Device...\n");
    EXPECT_THAT(session.told(),
                HasSubstr("\nthe hub is busy: another program has it open, or its place cannot be "
                          "locked\n"));
}

TEST(Read, KeepsEveryByteOfTheNameInAnyLocale)
{
    for (const std::string name : {"\xC3\xBC.bin", "Caf\xE9.bin", "\xFF\x80 \n.bin"}) {
        Session session("latency=none");
        EXPECT_EQ(session.read(session.folder.path(name)), kExitSuccess);
        EXPECT_EQ(session.folder.read(name), demoImage());
        EXPECT_EQ(filesIn(session.folder), 2U) << "config.ini and the flash";
    }
}

TEST(Read, TellsTheReasonOnStandardErrorAndLeavesTheFile)
{
    Session session("latency=none,mode=rom,fault=stall@read#1");
    const std::string file = session.folder.write("read.bin", "earlier");
    const std::size_t files = filesIn(session.folder);
    EXPECT_EQ(session.read(file), kExitTransferFailed);
    EXPECT_EQ(session.told(), "Fail to Read Flash\nRead Fw Fail\n"
                              "the hub refused the request (stall): read at 0x0000\n");
    EXPECT_THAT(session.out.str(), StartsWith("Open Device...\n"));
    EXPECT_THAT(session.out.str(), Not(HasSubstr("Success")));
    EXPECT_EQ(session.folder.text("read.bin"), "earlier");
    EXPECT_EQ(filesIn(session.folder), files);
    EXPECT_FALSE(Hub_IsOpen());
}

TEST(Read, ComparesTwoReads)
{
    Session session("latency=none,mode=rom,fault=flip:2@read#12");
    EXPECT_EQ(session.read(session.folder.path("read.bin")), kExitDiffers);
    EXPECT_THAT(session.told(),
                HasSubstr("\ntwo reads of the flash differ in 1 byte, the first at 0x3002\n"));
    EXPECT_EQ(filesIn(session.folder), 1U) << "only config.ini";
}

TEST(Read, SavesWhatItReadEvenIfTheHubDoesNotComeBack)
{
    Session session("latency=none,fault=never@2");
    const std::string file = session.folder.path("read.bin");
    EXPECT_EQ(session.read(file), kExitNotConfirmed);
    EXPECT_THAT(session.out.str(), HasSubstr("\nSaved 32768 bytes to " + file + '\n'));
    EXPECT_EQ(session.told(), "Fail to Reset to Flash Code\nRead Fw Fail\n"
                              "read, but the hub did not return to sim-1\n");
    EXPECT_EQ(session.folder.read("read.bin"), demoImage());
}

TEST(Read, LeavesTheHubAloneWhereNothingCanBeSaved)
{
    Session session("latency=none");
    session.folder.write("file", "earlier");
    fs::create_symlink("/dev/full", session.folder.path("full"));
    const struct {
        std::string file;
        std::string why;
    } rows[] = {
        {session.folder.path(), "it is a folder"},
        {session.folder.path("missing/read.bin"), "No such file or directory"},
        {session.folder.path("file/read.bin"), "Not a directory"},
        {"/dev/full", "it is not a regular file"},
        {session.folder.path("full"), "it is not a regular file"},
        {"/proc/self/read.bin", "No such file or directory"}, // nobody can create files there
    };
    const std::size_t files = filesIn(session.folder);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.file);
        EXPECT_EQ(session.read(row.file), kExitFailure);
        EXPECT_EQ(session.told(), "the flash was not read, because it could not be saved: " +
                                      row.file + ": " + row.why + '\n');
        EXPECT_THAT(session.out.str(), IsEmpty());
    }
    EXPECT_EQ(session.hub().requestCount(), 0U);
    EXPECT_EQ(session.folder.text("file"), "earlier");
    EXPECT_EQ(filesIn(session.folder), files);
}

TEST(Read, LeavesTheFileWhenTheDiskIsFull)
{
    Session session("latency=none");
    const std::string file = session.folder.write("read.bin", "earlier");
    const std::size_t files = filesIn(session.folder);

    int status = kExitSuccess;
    {
        const FullDisk oneByteShort(32767);
        status = session.read(file);
    }

    EXPECT_EQ(status, kExitFailure);
    EXPECT_EQ(session.told(),
              "the flash was read but could not be saved: " + file + ": File too large\n");
    EXPECT_EQ(session.folder.text("read.bin"), "earlier");
    EXPECT_EQ(filesIn(session.folder), files);
}

TEST(Read, ReplacesNoFileUnlessForced)
{
    Session session("latency=none");
    CommandLine line = session.line("read", session.folder.write("read.bin", "earlier"));
    line.force = false;
    EXPECT_EQ(session.run(line), kExitFailure);
    EXPECT_EQ(session.told(), "the flash was not read, because it could not be saved: " +
                                  line.image + " exists, and is not replaced without --force\n");
    EXPECT_THAT(session.err.str(), HasSubstr(" --force\n"));
    EXPECT_EQ(session.hub().requestCount(), 0U);

    line.image = session.folder.path("late.bin"); // appears while the hub is read
    session.hub().onRequest = [&](const ControlRequest&) {
        session.folder.write("late.bin", "meanwhile");
    };
    EXPECT_EQ(session.run(line), kExitFailure);
    EXPECT_EQ(session.folder.text("late.bin"), "meanwhile");

    session.hub().onRequest = nullptr;
    line.force = true;
    EXPECT_EQ(session.run(line), kExitSuccess);
    EXPECT_EQ(session.folder.read("late.bin"), demoImage());
}

TEST(Read, GivesStandardOutputToTheFlashAlone)
{
    Session session("latency=none");
    CommandLine line = session.line("read", "-");
    for (const char* const progress : {"auto", "bar"}) {
        line.progress = progress;
        EXPECT_EQ(session.run(line), kExitSuccess);
        const std::string out = session.out.str();
        EXPECT_EQ(std::vector<std::uint8_t>(out.begin(), out.end()), demoImage()) << progress;
        EXPECT_THAT(session.err.str(), HasSubstr("\nRead Fw Success\n"));
    }

    CommandLine hub = session.line("image info", "hub");
    hub.progress = "bar";
    EXPECT_EQ(session.run(hub), kExitSuccess);
    EXPECT_THAT(session.err.str(), Not(HasSubstr("#"))) << "a bar needs standard output";

    CommandLine both = line;
    both.json = true;
    EXPECT_EQ(session.run(both), kExitUsage);
    EXPECT_FALSE(fs::exists("-"));
}

TEST(Read, SaysThatAFlashIsBlank)
{
    Session session("latency=none");
    session.hub().setFlash(std::vector<std::uint8_t>(32768, 0xFF));
    EXPECT_EQ(session.read(session.folder.path("read.bin")), kExitSuccess);
    EXPECT_THAT(session.told(), StartsWith("The flash is blank: "));
}

TEST(Read, KeepsTheMachineAwake)
{
    Session session("latency=none");
    session.hub().onRequest = [&](const ControlRequest&) { EXPECT_EQ(session.sleep.holds, 1); };
    EXPECT_EQ(session.read(session.folder.path("read.bin")), kExitSuccess);
    EXPECT_EQ(session.sleep.holds, 0);

    session.hub().onRequest = nullptr;
    session.sleep.problem = "no logind";
    EXPECT_EQ(session.read(session.folder.path("read.bin")), kExitSuccess);
    EXPECT_THAT(session.err.str(), IsEmpty());
    EXPECT_THAT(session.state.text("vornadel/vornadelctl.log"),
                HasSubstr("] the machine may go to sleep: no logind\n"));
}

TEST(Erase, LeavesABlankFlashAndTellsItsSteps)
{
    Session session("latency=none");
    EXPECT_EQ(session.erase(), kExitSuccess);
    EXPECT_EQ(session.out.str(), "Open Rom Device...\n"
                                 "Save Flash...\n"
                                 "Saved the old flash to " +
                                     session.onlyBackup() +
                                     "\n"
                                     "Erase Flash...\n"
                                     "Reseting...\n"
                                     "Erase FW Success\n");
    EXPECT_THAT(session.told(), IsEmpty());
    EXPECT_EQ(session.hub().flash(), std::vector<std::uint8_t>(32768, 0xFF));
    EXPECT_EQ(session.hub().runningCode(), HubCode::Rom) << "there is no other left";
    EXPECT_FALSE(Hub_IsOpen());
}

TEST(Erase, IsConfirmedByTheFlash)
{
    Session session("latency=none,fault=ignore@erase");
    EXPECT_EQ(session.erase(), kExitDiffers);
    EXPECT_THAT(session.told(), StartsWith("Fail to Erase flash\nErase FW Fail\nnot erased: "));
    EXPECT_THAT(session.told(), HasSubstr(" bytes, the first at 0x0000\n"));
}

TEST(Erase, TellsTheTrueCauseOfAFailureOnStandardError)
{
    Session session("latency=none,fault=stall@erase#1,fault=stall@erase#2,fault=stall@erase#3");
    EXPECT_EQ(session.erase(), kExitTransferFailed);
    EXPECT_EQ(session.told(),
              "Fail to Erase flash\nErase FW Fail\nthe hub refused the request (stall): erase\n");
    EXPECT_THAT(session.out.str(), Not(HasSubstr("Success")));
    EXPECT_EQ(session.hub().flash(), demoImage());
}

} // namespace

} // namespace vornadel::test
