#include "standins/sim/DemoImage.h"
#include "tests/cli/Session.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

namespace vornadel::test
{
namespace
{

using namespace std::chrono_literals;
using testing::HasSubstr;

TEST(Verify, TellsWhetherTheFlashEqualsTheImage)
{
    Session session;
    const std::string same = session.folder.write("same.bin", demoImage());
    const std::string other = session.folder.write("other.bin", demoImage(kDemoVersion101));
    EXPECT_EQ(session.run(session.line("verify", same)), kExitSuccess);
    EXPECT_THAT(session.out.str(), HasSubstr("Verify FW Success\n"));
    EXPECT_EQ(session.run(session.line("verify", other)), kExitDiffers);
    EXPECT_THAT(session.out.str(),
                HasSubstr("in the image -> in the flash:\nversion: 0101 -> 0100"));
    EXPECT_THAT(session.told(), HasSubstr("the flash differs from the image in "));
    EXPECT_EQ(session.hub().flash(), demoImage());
    EXPECT_EQ(session.hub().runningCode(), HubCode::Flash);
}

TEST(Verify, RefusesWhatNoFlashCanHold)
{
    Session session;
    const std::string file =
        session.folder.write("long.bin", std::vector<std::uint8_t>(kSimulatedFlashSize + 1));
    EXPECT_EQ(session.run(session.line("verify", file)), kExitImageRefused);
    EXPECT_EQ(session.run(session.line("verify", session.folder.path("none.bin"))),
              kExitImageRefused);
    EXPECT_EQ(session.hub().requestCount(), 0U);
}

TEST(Restart, LeadsIntoTheRomCodeAndBack)
{
    Session session;
    CommandLine line = session.line("restart");
    line.rom = true;
    EXPECT_EQ(session.run(line), kExitSuccess);
    EXPECT_EQ(session.hub().runningCode(), HubCode::Rom);
    EXPECT_EQ(session.run(session.line("restart")), kExitSuccess);
    EXPECT_EQ(session.hub().runningCode(), HubCode::Flash);
    ASSERT_TRUE(session.hub().setFlash(std::vector<std::uint8_t>(kSimulatedFlashSize, 0xFF)));
    EXPECT_EQ(session.run(session.line("restart")), kExitNotConfirmed);
}

TEST(Wait, EndsAsSoonAsTheSelectedHubIsAttached)
{
    Session session("hubs=2");
    session.hub(2).unplug();
    session.selector.path = "sim-2";
    session.clock.after(12s, [&] { session.hub(2).replug(); });
    EXPECT_EQ(session.run(session.line("wait")), kExitSuccess);
    EXPECT_EQ(session.clock.now(), 12s);
    EXPECT_EQ(session.out.str(), "attached: sim-2\n");
    EXPECT_EQ(session.err.str(), "waiting for the hub, 5 s\nwaiting for the hub, 10 s\n");
    EXPECT_EQ(session.run(session.line("wait")), kExitSuccess) << "it is there already";
    EXPECT_EQ(session.clock.now(), 12s);
}

TEST(Wait, GivesUpAfterTheTimeout)
{
    Session session;
    session.hub().unplug();
    CommandLine line = session.line("wait");
    line.timeout = 3;
    EXPECT_EQ(session.run(line), kExitNoHub);
    EXPECT_EQ(session.clock.now(), 3s);
    EXPECT_THAT(session.err.str(), HasSubstr("within 3 s"));
    session.interruptBeforeCommands = true;
    EXPECT_EQ(session.run(line), kExitFailure);
    EXPECT_EQ(session.clock.now(), 3s) << "at once";
    EXPECT_THAT(session.err.str(), HasSubstr("stopped [interrupted]"));
}

} // namespace
} // namespace vornadel::test
