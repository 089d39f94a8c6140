#include "cli/CommandReporter.h"
#include "hub/HubTransport.h"
#include "hub/SupportedIds.h"
#include "standins/sim/DemoImage.h"
#include "tests/cli/Session.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <iomanip>
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
using testing::StartsWith;

std::string newImage(const Session& session)
{
    return session.folder.write("new.bin", demoImage(kDemoVersion101));
}

TEST(Update, TellsEachStepOnALineOfItsOwn)
{
    Session session("latency=none");
    const std::string image = newImage(session);
    EXPECT_EQ(session.update(image), kExitSuccess);
    EXPECT_EQ(session.out.str(), "FW:" + image +
                                     "(size=32768)\n\n"
                                     "Save Flash...\n"
                                     "Saved the old flash to " +
                                     session.onlyBackup() +
                                     "\n"
                                     "Erase Flash...\n"
                                     "Write Flash...\n"
                                     "Read Flash...\n"
                                     "Verify Flash...\n"
                                     "Reset to Flash Code...\n"
                                     "Update FW Success\n");
    EXPECT_THAT(session.told(), IsEmpty());
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

TEST(Update, TellsTheTrueCauseOfAFailureOnStandardError)
{
    Session session("latency=none,mode=rom,fault=flip:1@write#5");
    EXPECT_EQ(session.update(newImage(session)), kExitDiffers);
    EXPECT_EQ(session.told(), "Fail to verify flash\nUpdate FW Fail\n"
                              "the flash differs from the image in 1 byte, the first at 0x4001\n");
    EXPECT_THAT(session.out.str(), Not(HasSubstr("Fail")));
    EXPECT_THAT(session.out.str(), Not(HasSubstr("Success")));
    EXPECT_FALSE(Hub_IsOpen());
}

TEST(Update, TakesTheImageFromStandardInput)
{
    Session session("latency=none");
    const std::vector<std::uint8_t> image = demoImage(kDemoVersion101);
    session.in.str({image.begin(), image.end()});
    EXPECT_EQ(session.update("-"), kExitSuccess) << session.told();
    EXPECT_THAT(session.out.str(), HasSubstr("FW:standard input(size=32768)\n"));
    EXPECT_EQ(session.hub().flash(), image);
    EXPECT_EQ(session.update("-"), kExitImageRefused) << "now it is empty";
    EXPECT_EQ(session.update("hub"), kExitUsage);
}

TEST(Update, RefusesAFileThatIsNoImageAndLeavesTheHubAlone)
{
    Session session("latency=none");
    const struct {
        std::string file;
        std::string why;
    } rows[] = {
        {session.folder.path("missing.bin"), "No such file or directory"},
        {session.folder.write("short.bin", std::string(255, 'x')), "Firmware format error"},
        {session.folder.write("noblock.bin", std::vector<std::uint8_t>(32768, 0xFF)),
         "Firmware format error"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.file);
        EXPECT_EQ(session.update(row.file), kExitImageRefused);
        EXPECT_EQ(session.told(), row.file + ": " + row.why + '\n');
    }
    EXPECT_EQ(session.hub().requestCount(), 0U);
    EXPECT_EQ(session.hub().flash(), demoImage());
}

TEST(Update, RefusesAnImageThatNoHubCouldRunAndLeavesTheHubAlone)
{
    Session session("latency=none");
    const std::vector<std::uint8_t> whole = demoImage(kDemoVersion101);
    std::vector<std::uint8_t> longer(256, 0xFF);
    longer.insert(longer.end(), whole.begin(), whole.end());
    std::vector<std::uint8_t> withoutIds = whole;
    std::fill_n(withoutIds.begin() + 0x7E00 + 4, 2, std::uint8_t{0});
    std::vector<std::uint8_t> badStrings = whole;
    badStrings[0x7E00 + 43] = 36;
    const struct {
        std::vector<std::uint8_t> image;
        std::string why;
    } rows[] = {
        {longer, "it has 33024 bytes, more than the hub's flash (32768)"},
        {{whole.begin() + 0x7E00, whole.end()}, "it has no firmware version"},
        {withoutIds, "its vendor id or one of its product ids is missing"},
        {badStrings, "the strings in its descriptor block are damaged"},
    };
    for (const auto& row : rows) {
        const std::string file = session.folder.write("bad.bin", row.image);
        EXPECT_EQ(session.update(file), kExitImageRefused);
        EXPECT_EQ(session.told(), file + ": " + row.why + '\n');
        EXPECT_THAT(session.out.str(), IsEmpty());
    }
    EXPECT_EQ(session.hub().requestCount(), 0U);
}

TEST(Update, FindsAHubAgainThatComesBackWithNewIds)
{
    const struct {
        std::vector<std::uint8_t> ids; ///< as in the image
        std::string text;
    } rows[] = {
        {{0x12, 0x10, 0x00, 0x77, 0x00, 0x78}, "1210:0077/0078"},
        {{0x12, 0x09, 0x00, 0x77, 0x00, 0x02}, "1209:0077/0002"},
        {{0x12, 0x09, 0x00, 0x01, 0x00, 0x78}, "1209:0001/0078"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        Session session("latency=none");
        std::vector<std::uint8_t> other = demoImage(kDemoVersion101);
        std::copy(row.ids.begin(), row.ids.end(), other.begin() + 0x7E00 + 2);
        EXPECT_EQ(session.update(session.folder.write("other.bin", other)), kExitSuccess)
            << session.told();
        EXPECT_THAT(session.out.str(),
                    StartsWith("the image gives the hub new ids, " + row.text +
                               "; they are supported until this command ends\n"));
        EXPECT_EQ(session.hub().flash(), other);
        EXPECT_TRUE(FindSupportedTriple(static_cast<std::uint16_t>(0x1200 | row.ids[1]), row.ids[3],
                                        row.ids[5]));
    }
}

TEST(Update, RefusesNewIdsThatTheConfigurationHasNoRoomFor)
{
    Session session("latency=none,ids=1209:0005:0002");
    std::string config = "[Support Vid Pid]\n";
    for (int i = 0; i < 64; ++i) {
        std::ostringstream number;
        number << std::hex << std::setw(2) << std::setfill('0') << i;
        config += "VID_" + number.str() + " = 0x1209\nSSPID_" + number.str() + " = 5\nHSPID_" +
                  number.str() + " = 2\n";
    }
    const std::string file = session.folder.write("config.ini", config);
    EXPECT_EQ(session.update(newImage(session)), kExitUsage);
    EXPECT_EQ(session.told(), file + " has no room for the ids in the image, 1209:0001/0002; "
                                     "remove a hub from it\n");
    EXPECT_EQ(session.hub().requestCount(), 0U);
}

TEST(Update, WorksOnTheHubsThatAConfigFileNames)
{
    Session session("latency=none,ids=1234:5678:9abc");
    const std::string image = newImage(session);
    EXPECT_EQ(session.update(image), kExitNoHub);
    EXPECT_EQ(session.told(), "no supported hub is attached\n");

    const std::string mine = session.folder.write(
        "mine.ini", "[Support Vid Pid]\nVID_3F = 0x1234\nSSPID_3F = 0x5678\nHSPID_3F = 0x9ABC\n");
    EXPECT_EQ(session.run({.verb = verbCalled("update"), .image = image, .configFile = mine}),
              kExitSuccess);
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

TEST(CommandReporter, KnowsHowFarTheFlowHasCome)
{
    Session session;
    session.withCommand(session.line("update"), [&](const Command& command) {
        CommandReporter reporter(command);
        reporter.started({FlowKind::Update, "a.bin", 8192});
        reporter.stepStarted(Step::Open);
        const auto isFirstWord = [&](auto) { EXPECT_FALSE(*session.stop.flag()); };
        EXPECT_EQ(session.stop.ask(isFirstWord), StopRequest::Phase::Unchanged);
        reporter.stepStarted(Step::Erase); // although it was asked to stop
        EXPECT_EQ(session.stop.ask(), StopRequest::Phase::Changing);
        reporter.stepStarted(Step::Restart);
        EXPECT_EQ(session.err.str(), std::string(kFinishing) + '\n') << "said once";
        reporter.finished({.step = Step::Erase, .cause = Cause::Interrupted});
        EXPECT_EQ(session.stop.ask(), StopRequest::Phase::NoFlow);
        EXPECT_EQ(session.err.str(), std::string(kFinishing) + "\nUpdate FW Fail\n");
    });

    Session other;
    other.withCommand(other.line("read"), [&](const Command& command) {
        CommandReporter reporter(command);
        reporter.started({FlowKind::Read});
        reporter.stepStarted(Step::Read);
        EXPECT_EQ(other.stop.ask(), StopRequest::Phase::Unchanged);
        reporter.stepStarted(Step::Restart);
        EXPECT_EQ(other.stop.ask(), StopRequest::Phase::Changing);
    });
}

} // namespace

} // namespace vornadel::test
