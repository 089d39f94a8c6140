#include "standins/virtual_hub/Console.h"

#include "tests/virtual_hub/RecordingHost.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vornadel::test
{
namespace
{

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

class ConsoleTest : public testing::Test
{
protected:
    std::string answer(const char* line) { return m_two.console.answer(line); }
    std::vector<std::string> attached(std::size_t hub) { return m_two.hosts.at(hub).attached(); }

    TwoHubs m_two;
};

TEST_F(ConsoleTest, PlugsAndUnplugsTheHubThatIsNamed)
{
    EXPECT_EQ(answer("unplug 2"), "ok");
    EXPECT_THAT(attached(0), ElementsAre("super", "high"));
    EXPECT_THAT(attached(1), IsEmpty());
    EXPECT_EQ(answer("unplug"), "ok");
    EXPECT_THAT(attached(0), IsEmpty());
    EXPECT_EQ(answer("plug-rom 2"), "ok");
    EXPECT_THAT(attached(1), ElementsAre("super", "high"));
    EXPECT_EQ(m_two.sims[1]->runningCode(), HubCode::Rom);
    EXPECT_EQ(answer("plug-rom 2"), "error: the hub is already plugged in");
    EXPECT_EQ(answer("plug 1"), "ok");
    EXPECT_THAT(attached(0), ElementsAre("super", "high"));
    EXPECT_EQ(m_two.sims[0]->runningCode(), HubCode::Flash);
}

TEST_F(ConsoleTest, AddsAFault)
{
    EXPECT_EQ(answer("fault stall@open-time 2"), "ok");
    ControlRequest openTime = {0x40, 0x02, 1, 0x1209};
    EXPECT_EQ(m_two.hosts[0].device(HubSpeed::SuperSpeed).vendorRequest(openTime), 0U);
    EXPECT_EQ(m_two.hosts[1].device(HubSpeed::SuperSpeed).vendorRequest(openTime), kSimulatedStall);
    EXPECT_THAT(answer("status 2"), HasSubstr("faults=1"));
    EXPECT_THAT(answer("fault nonsense"), StartsWith("error: "));
    EXPECT_THAT(answer("fault open-refused:1"), HasSubstr("open-refused"));
    EXPECT_THAT(answer("fault refused:40"), HasSubstr("does not see opens"));
}

TEST_F(ConsoleTest, SaysWhatIsWrongWithALine)
{
    for (const char* const line :
         {"", "   ", "Plug", "plug 0", "plug 3", "plug x", "plug -1", "plug 1x", "plug 1 2",
          "fault", "quit now", "status 99999999999999999999"}) {
        EXPECT_THAT(answer(line), StartsWith("error: ")) << line;
    }
    EXPECT_FALSE(m_two.console.quit());
    EXPECT_THAT(attached(0), ElementsAre("super", "high"));
}

} // namespace
} // namespace vornadel::test
