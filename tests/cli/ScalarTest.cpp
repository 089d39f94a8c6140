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

const std::string kIds =
    "[Support Vid Pid]\nVID_00 = 0x1209\nSSPID_00 = 0x0001\nHSPID_00 = 0x0002\n";

int scalar(Session& session, const std::string& configFile = {})
{
    return session.run({.verb = verbCalled("scalar"), .configFile = configFile});
}

TEST(Scalar, WritesTheImageThatTheConfigurationNames)
{
    Session session("latency=none");
    session.folder.write("config.ini", "[DumpTool Config]\nFwBin = new.bin\n" + kIds);
    session.folder.write("new.bin", demoImage(kDemoVersion101));
    EXPECT_EQ(scalar(session), kExitSuccess);
    EXPECT_THAT(session.out.str(), StartsWith("FW:new.bin(size=32768)\n"));
    EXPECT_THAT(session.out.str(), EndsWith("Update FW Success\n"));
    EXPECT_EQ(session.hub().flash(), demoImage(kDemoVersion101));
}

TEST(Scalar, SaysWhichImageWasNotReadAndWhyAndLeavesTheHubAlone)
{
    Session session("latency=none");
    const std::string config = session.folder.path("config.ini");
    const struct {
        std::string settings;
        int status;
        std::string why;
    } rows[] = {
        {"", kExitUsage, config + ": FwBin names no image"},
        {"[DumpTool Config]\nFwBin = missing.bin\n", kExitImageRefused,
         session.folder.path("missing.bin") + ": No such file or directory"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.settings);
        session.folder.write("config.ini", row.settings + kIds);
        EXPECT_EQ(scalar(session), row.status);
        EXPECT_EQ(session.told(), row.why + '\n');
    }
    session.folder.write("config.ini", "no key\n" + kIds);
    EXPECT_EQ(scalar(session), kExitUsage);
    EXPECT_EQ(session.told(),
              "the configuration cannot be used: iniparser: syntax error in " + config + " (1)\n");
    EXPECT_EQ(session.hub().requestCount(), 0U);
}

TEST(Scalar, LooksBesideTheConfigurationFileThatIsNamed)
{
    Session session("latency=none");
    TemporaryFolder other;
    const std::string config =
        other.write("own.ini", "[DumpTool Config]\nFwBin = new.bin\n" + kIds);
    other.write("new.bin", demoImage(kDemoVersion101));
    EXPECT_EQ(scalar(session, config), kExitSuccess);
    EXPECT_EQ(session.hub().flash(), demoImage(kDemoVersion101));

    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(other.path());
    EXPECT_EQ(scalar(session, "own.ini"), kExitSuccess);
    std::filesystem::current_path(before);
}

} // namespace

} // namespace vornadel::test
