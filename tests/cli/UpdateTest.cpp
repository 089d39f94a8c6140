#include "cli/ConsoleReporter.h"
#include "hub/HubTransport.h"
#include "standins/sim/DemoImage.h"
#include "tests/cli/Session.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

namespace vornadel::test
{

namespace
{

using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

std::string newImage(const Session& session)
{
    return session.folder.write("new.bin", demoImage(kDemoVersion101));
}

TEST(Update, TellsEachStepAndEachPercentageOnALineOfItsOwn)
{
    Session session("latency=none");
    const std::string image = newImage(session);
    EXPECT_EQ(session.update(image), kExitSuccess);
    EXPECT_EQ(session.out.str(), "0%\n"
                                 "FW:" +
                                     image +
                                     "(size=32768)\n\n"
                                     "Erase Flash...\n10%\n"
                                     "Write Flash...\n15%\n20%\n25%\n30%\n35%\n40%\n45%\n50%\n"
                                     "Read Flash...\n55%\n60%\n65%\n70%\n75%\n80%\n85%\n90%\n"
                                     "Verify Flash...\n100%\n"
                                     "Reset to Flash Code...\n"
                                     "Update FW Success\n");
    EXPECT_THAT(session.err.str(), IsEmpty());
    EXPECT_EQ(session.hub().flash(), demoImage(kDemoVersion101));
    EXPECT_EQ(session.hub().runningCode(), HubCode::Flash);
    EXPECT_FALSE(Hub_IsOpen());
}

TEST(Update, MovesOneLineOnATerminal)
{
    Session session("latency=none");
    EXPECT_EQ(session.update(newImage(session), true), kExitSuccess);

    EXPECT_THAT(session.out.str(),
                HasSubstr("Write Flash...\n\r[#######" + std::string(43, ' ') + "]  15%\r["));
    EXPECT_THAT(session.out.str(), HasSubstr("\r[" + std::string(25, '#') + std::string(25, ' ') +
                                             "]  50%\nRead Flash...\n"));
    EXPECT_THAT(session.out.str(), HasSubstr("Verify Flash...\n\r[" + std::string(50, '#') +
                                             "] 100%\nReset to Flash Code...\n"));
    EXPECT_THAT(session.out.str(), EndsWith("Update FW Success\n"));
}

TEST(Update, TellsTheReasonOfAFailureOnStandardErrorAndExitsWithOne)
{
    Session session("latency=none,mode=rom,fault=flip@write#5");
    EXPECT_EQ(session.update(newImage(session)), kExitFailure);
    EXPECT_EQ(session.err.str(), "Fail to verify flash\nUpdate FW Fail\n");
    EXPECT_THAT(session.out.str(), Not(HasSubstr("Fail")));
    EXPECT_THAT(session.out.str(), Not(HasSubstr("Success")));
    EXPECT_FALSE(Hub_IsOpen());
}

TEST(Update, RefusesAFileThatIsNoImageAndLeavesTheHubAlone)
{
    Session session("latency=none");
    const struct {
        std::string file;
        std::string why; ///< it was not read
    } rows[] = {
        {session.folder.path("missing.bin"), "No such file or directory"},
        {session.folder.write("short.bin", std::string(255, 'x')), {}},
        {session.folder.write("noblock.bin", std::vector<std::uint8_t>(32768, 0xFF)), {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.file);
        EXPECT_EQ(session.update(row.file), kExitFailure);
        EXPECT_EQ(session.err.str(), (row.why.empty() ? "" : row.file + ": " + row.why + '\n') +
                                         "Wrong firmware file\nUpdate FW Fail\n");
    }
    EXPECT_EQ(session.hub().requestCount(), 0U);
    EXPECT_EQ(session.hub().flash(), demoImage());
}

TEST(Update, WorksOnTheHubsThatAConfigFileNames)
{
    Session session("latency=none,ids=1234:5678:9abc");
    const std::string image = newImage(session);
    EXPECT_EQ(session.update(image), kExitFailure);
    EXPECT_EQ(session.err.str(), "Fail To Open Rom Device\nPlease Load Driver firstly\n"
                                 "Then replugin usb hub device\nUpdate FW Fail\n");

    const std::string mine = session.folder.write(
        "mine.ini", "[Support Vid Pid]\nVID_3F = 0x1234\nSSPID_3F = 0x5678\nHSPID_3F = 0x9ABC\n");
    EXPECT_EQ(session.run({CommandLine::Verb::Update, image, mine, {}}), kExitSuccess);
    EXPECT_EQ(session.hub().flash(), demoImage(kDemoVersion101));
}

TEST(Update, SendsNothingWhenASignalCameBeforeItsFirstRequest)
{
    Session session;
    const std::string image = newImage(session);
    session.interruptBeforeCommands = true;
    EXPECT_EQ(session.update(image), kExitFailure);
    EXPECT_EQ(session.hub().requestCount(), 0U);
}

TEST(ConsoleReporter, EndsTheMovingLineBeforeAFailureAndAtItsEnd)
{
    std::ostringstream screen;
    {
        ConsoleReporter console(screen, screen, true);
        FlowReporter& reporter = console;
        reporter.started({FlowKind::Update, "a.bin", 8192});
        reporter.stepStarted(Step::Write);
        reporter.progressed(4096, 8192);
        reporter.finished({Step::Write, Cause::RequestFailed, 4096});
        EXPECT_THAT(screen.str(), HasSubstr("%\nFail to Write Flash\n"));
        reporter.progressed(8192, 8192);
        EXPECT_THAT(screen.str(), EndsWith("%"));
    }
    EXPECT_THAT(screen.str(), EndsWith("%\n"));
}

} // namespace

} // namespace vornadel::test
