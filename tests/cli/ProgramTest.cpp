// The program as scripts use it. These tests take real time, so there are few.

#include "tests/cli/Program.h"
#include "standins/sim/DemoImage.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

namespace vornadel::test
{

namespace
{

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

/// A folder with a new image, and the flash file of a hub beside it.
class ProgramTest : public testing::Test
{
protected:
    ProgramTest() { ::setenv("XDG_STATE_HOME", m_folder.path("state").c_str(), 1); }

    std::string hub(const std::string& options) const
    {
        return "--simulated-hub=image=" + m_folder.path("flash.bin") + ',' + options;
    }
    std::vector<std::uint8_t> flash() const { return m_folder.read("flash.bin"); }

    const TemporaryFolder m_folder;
    const std::string m_image = m_folder.write("new.bin", demoImage(kDemoVersion101));
};

TEST_F(ProgramTest, TellsByItsExitStatusHowItWent)
{
    const struct {
        std::vector<std::string> arguments;
        int status;
    } rows[] = {
        {{hub("latency=none"), "info"}, 0},
        {{hub("latency=none"), "list"}, 0},
        {{"info", m_image}, 0},
        {{"info", m_folder.path("missing.bin")}, 6},
        {{hub("latency=none,mode=rom"), "read", "/dev/full"}, 1},
        {{hub("ids=1:2:3"), "info"}, 3},
        {{hub("latency=none"), "erase"}, 10},
        {{hub("hubs=2"), "erase"}, 4},
        {{"--simulated-hub", "update", "/dev/null"}, 6},
        {{hub("mode=rom,latency=none,fault=stall@write#1"), "update", m_image}, 7},
        {{hub("mode=rom,latency=none,fault=flip@write#1"), "update", m_image}, 8},
        {{hub("mode=rom,latency=none,fault=same-mode"), "update", m_image}, 9},
        {{hub("fault=open-refused:1"), "info"}, 11},
        {{"read"}, 2},
        {{"erase", m_image}, 2},
        {{}, 2},
        {{"nonsense"}, 2},
        {{"--simulated-hub=nonsense", "info"}, 2},
        {{"--config", m_folder.path("missing.ini"), "list"}, 2},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.arguments));
        Program program(row.arguments);
        EXPECT_EQ(program.finish(), row.status) << program.err();
        const bool silent = row.status == 0;
        EXPECT_EQ(program.err().empty(), silent) << program.err();
    }
}

TEST_F(ProgramTest, HasASimulatedHubOnlyIfItIsAskedFor)
{
    Program simulated({hub("latency=none"), "list"});
    EXPECT_EQ(simulated.finish(), 0) << simulated.err();
    Program real({"list"});
    real.finish(); // fails on machines without USB
    EXPECT_NE(real.out(), simulated.out());
}

TEST_F(ProgramTest, SaysWhyItCannotSimulateAHub)
{
    Program program({"--simulated-hub=image=" + m_folder.path(), "info"});
    EXPECT_EQ(program.finish(), 2);
    EXPECT_THAT(program.err(), StartsWith("--simulated-hub: " + m_folder.path() +
                                          ": it is a folder [simulated-hub]\n"));
}

TEST_F(ProgramTest, SavesWhatItUpdatedAndErasesIt)
{
    Program update({hub("latency=none,mode=rom"), "update", m_image});
    EXPECT_EQ(update.finish(), 0) << update.err();
    EXPECT_THAT(update.out(), HasSubstr("\nErase Flash...\nWrite Flash...\n"))
        << "through a pipe, one line for each step";
    Program read({hub("latency=none,mode=rom"), "read", m_folder.path("read.bin")});
    EXPECT_EQ(read.finish(), 0) << read.err();
    EXPECT_EQ(m_folder.read("read.bin"), demoImage(kDemoVersion101));

    Program erase({hub("latency=none,mode=rom"), "erase", "--yes"});
    EXPECT_EQ(erase.finish(), 0) << erase.err();
    EXPECT_EQ(flash(), std::vector<std::uint8_t>(32768, 0xFF));
}

TEST_F(ProgramTest, EndsTheWaitForARestartWhenSignalledTwice)
{
    Program terminated({hub("mode=rom,latency=none,fault=never@1"), "update", m_image});
    ASSERT_TRUE(terminated.waitFor("Reset to Flash Code...\n"));
    terminated.send(SIGTERM); // before twenty pauses of two seconds
    ASSERT_TRUE(terminated.waitForError("finishing first"));
    terminated.send(SIGINT);
    EXPECT_EQ(terminated.finish(), 143);
    EXPECT_THAT(terminated.err(), HasSubstr("Fail to Reset to Flash Code\nUpdate FW Fail\n"
                                            "verified, but the program was stopped"));
    EXPECT_THAT(terminated.err(), EndsWith("\nInterrupted\n"));

    Program next({hub("latency=none"), "info"});
    EXPECT_EQ(next.finish(), 0);
    EXPECT_EQ(next.out(), "firmware version: 0101\nrunning:          flash code\n");
}

TEST_F(ProgramTest, FinishesAnUpdateThatIsSignalledAfterItsErase)
{
    Program program({hub("mode=rom"), "update", m_image});
    ASSERT_TRUE(program.waitFor("Erase Flash...\n")); // which takes 150 ms
    program.send(SIGHUP);
    EXPECT_EQ(program.finish(), 0) << program.err();
    EXPECT_THAT(program.err(), StartsWith("finishing first"));
    EXPECT_EQ(flash(), demoImage(kDemoVersion101));
}

TEST_F(ProgramTest, LeavesTheFlashAloneWhenSignalledBeforeTheErase)
{
    Program program({hub("mode=flash"), "update", m_image});
    ASSERT_TRUE(program.waitFor("FW:"));
    program.send(SIGINT); // during the restart into ROM code
    EXPECT_EQ(program.finish(), 130);
    EXPECT_THAT(program.err(), StartsWith("stopping; the hub stays as it was\n"));
    EXPECT_THAT(program.err(), HasSubstr("\nstopped [interrupted]\n"));
    EXPECT_EQ(flash(), demoImage());
}

TEST_F(ProgramTest, StopsWaitingForAnImageOnStandardInput)
{
    std::array<int, 2> silent{};
    ASSERT_EQ(::pipe2(silent.data(), O_CLOEXEC), 0);
    const int own = ::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 3);
    ::dup2(silent[0], STDIN_FILENO);
    Program program({hub("latency=none"), "--json", "update", "-"});
    ::dup2(own, STDIN_FILENO);
    ::close(own);
    ASSERT_TRUE(program.waitFor("\"start\""));
    program.send(SIGHUP);
    EXPECT_EQ(program.finish(), 129);
    EXPECT_THAT(program.out(), HasSubstr("\"ok\":false,\"exit\":129,\"id\":\"interrupted\""));
    ::close(silent[0]);
    ::close(silent[1]);
}

TEST_F(ProgramTest, FinishesTheUpdateWhenNobodyReadsItsOutputAnyMore)
{
    Program program({hub("mode=rom,latency=none"), "update", m_image});
    ASSERT_TRUE(program.waitFor("Erase Flash...\n"));
    program.stopReading();
    EXPECT_EQ(program.finish(), 0) << program.err();
    EXPECT_EQ(flash(), demoImage(kDemoVersion101));
}

} // namespace

} // namespace vornadel::test
