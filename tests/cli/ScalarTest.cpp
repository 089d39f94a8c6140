#include "standins/sim/DemoImage.h"
#include "tests/cli/Session.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace vornadel::test
{

namespace
{

using testing::EndsWith;
using testing::StartsWith;

std::string asText(const std::vector<std::uint8_t>& bytes) { return {bytes.begin(), bytes.end()}; }

const std::string kIds =
    "[Support Vid Pid]\nVID_00 = 0x1209\nSSPID_00 = 0x0001\nHSPID_00 = 0x0002\n";

int scalar(Session& session, const std::string& configFile = {})
{
    return session.run({CommandLine::Verb::Scalar, {}, configFile, {}});
}

TEST(Scalar, WritesTheImageThatTheConfigurationNames)
{
    Session session("latency=none");
    session.folder.write("config.ini", "[DumpTool Config]\nFwBin = new.bin\n" + kIds);
    session.folder.write("new.bin", asText(demoImage(kDemoVersion101)));
    EXPECT_EQ(scalar(session), kExitSuccess);
    EXPECT_THAT(session.out.str(), StartsWith("0%\nFW:new.bin(size=32768)\n"));
    EXPECT_THAT(session.out.str(), EndsWith("Update FW Success\n"));
    EXPECT_EQ(session.hub().flash(), demoImage(kDemoVersion101));
}

TEST(Scalar, LooksBesideTheConfigurationFileThatIsNamed)
{
    Session session("latency=none");
    TemporaryFolder other;
    const std::string config =
        other.write("own.ini", "[DumpTool Config]\nFwBin = new.bin\n" + kIds);
    other.write("new.bin", asText(demoImage(kDemoVersion101)));
    EXPECT_EQ(scalar(session, config), kExitSuccess);
    EXPECT_EQ(session.hub().flash(), demoImage(kDemoVersion101));
}

TEST(Scalar, FailsWithoutAnImageAndLeavesTheHubAlone)
{
    for (const std::string settings : {"", "[DumpTool Config]\nFwBin = missing.bin\n"}) {
        Session session("latency=none");
        session.folder.write("config.ini", settings + kIds);
        EXPECT_EQ(scalar(session), kExitFailure);
        EXPECT_EQ(session.err.str(), "Wrong firmware file\nUpdate FW Fail\n");
        EXPECT_EQ(session.hub().requestCount(), 0U);
    }
}

TEST(Scalar, LooksInTheCurrentFolderForAConfigurationThere)
{
    Session session("latency=none");
    TemporaryFolder other;
    other.write("own.ini", "[DumpTool Config]\nFwBin = new.bin\n" + kIds);
    other.write("new.bin", asText(demoImage(kDemoVersion101)));
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(other.path());
    EXPECT_EQ(scalar(session, "own.ini"), kExitSuccess);
    std::filesystem::current_path(before);
    EXPECT_EQ(session.hub().flash(), demoImage(kDemoVersion101));
}

TEST(Scalar, SendsNothingWhenASignalCameBeforeItsFirstRequest)
{
    Session session("latency=none");
    session.folder.write("config.ini", "[DumpTool Config]\nFwBin = new.bin\n" + kIds);
    session.folder.write("new.bin", asText(demoImage(kDemoVersion101)));
    session.interruptBeforeCommands = true;
    EXPECT_EQ(scalar(session), kExitFailure);
    EXPECT_EQ(session.hub().requestCount(), 0U);
}

TEST(Scalar, FailsWithoutAHub)
{
    Session session("latency=none");
    session.folder.write("config.ini", "[DumpTool Config]\nFwBin = new.bin\n" + kIds);
    session.folder.write("new.bin", asText(demoImage(kDemoVersion101)));
    session.hub().unplug();
    EXPECT_EQ(scalar(session), kExitFailure);
    EXPECT_THAT(session.err.str(), StartsWith("Fail To Open Rom Device\n"));
}

} // namespace

} // namespace vornadel::test
