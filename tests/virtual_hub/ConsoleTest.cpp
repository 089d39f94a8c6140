#include "standins/virtual_hub/Console.h"

#include "tests/support/VirtualClock.h"
#include "tests/virtual_hub/RecordingHost.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
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

/// Two hubs, each on its own bus.
class ConsoleTest : public testing::Test
{
protected:
    void SetUp() override
    {
        for (unsigned number = 1; number <= 2; ++number) {
            std::string error;
            m_sims.push_back(hubInMemory("latency=none", m_clock));
            m_hubs.push_back(std::make_unique<VirtualHub>(
                number, m_sims.back(), m_hosts.at(number - 1), [](const std::string&) {}));
            ASSERT_TRUE(m_hubs.back()->start(error)) << error;
        }
    }
    void TearDown() override { m_hubs.clear(); }

    VirtualClock m_clock;
    std::array<RecordingHost, 2> m_hosts;
    std::vector<std::shared_ptr<SimulatedHub>> m_sims;
    std::vector<std::unique_ptr<VirtualHub>> m_hubs;
    Console m_console{m_hubs};
};

TEST_F(ConsoleTest, PlugsAndUnplugsTheHubThatIsNamed)
{
    EXPECT_EQ(m_console.answer("unplug 2"), "ok");
    EXPECT_THAT(m_hosts[0].attached(), ElementsAre("super", "high"));
    EXPECT_THAT(m_hosts[1].attached(), IsEmpty());
    EXPECT_EQ(m_console.answer("unplug"), "ok");
    EXPECT_THAT(m_hosts[0].attached(), IsEmpty());
    EXPECT_EQ(m_console.answer("plug-rom 2"), "ok");
    EXPECT_THAT(m_hosts[1].attached(), ElementsAre("super", "high"));
    EXPECT_EQ(m_sims[1]->runningCode(), HubCode::Rom);
    EXPECT_EQ(m_console.answer("plug 1"), "ok");
    EXPECT_THAT(m_hosts[0].attached(), ElementsAre("super", "high"));
    EXPECT_EQ(m_sims[0]->runningCode(), HubCode::Flash);
}

TEST_F(ConsoleTest, TellsHowAHubIs)
{
    EXPECT_EQ(m_console.answer("status"),
              "ok code=flash superspeed=super1 high-speed=high1 requests=0 faults=0");
    m_console.answer("unplug 2");
    m_console.answer("plug-rom 2");
    ControlRequest openTime = {0x40, 0x02, 1, 0x1209};
    m_hosts[1].device(HubSpeed::SuperSpeed).vendorRequest(openTime);
    EXPECT_EQ(m_console.answer("status 2"),
              "ok code=rom superspeed=super2 high-speed=high2 requests=1 faults=0");
    m_console.answer("unplug 2");
    EXPECT_THAT(m_console.answer("status 2"), HasSubstr("superspeed=- high-speed=-"));
}

TEST_F(ConsoleTest, AddsAFault)
{
    EXPECT_EQ(m_console.answer("fault stall@open-time 2"), "ok");
    ControlRequest openTime = {0x40, 0x02, 1, 0x1209};
    EXPECT_EQ(m_hosts[0].device(HubSpeed::SuperSpeed).vendorRequest(openTime), 0U);
    EXPECT_EQ(m_hosts[1].device(HubSpeed::SuperSpeed).vendorRequest(openTime), kSimulatedStall);
    EXPECT_THAT(m_console.answer("status 2"), HasSubstr("faults=1"));
    EXPECT_THAT(m_console.answer("fault nonsense"), StartsWith("error: "));
    EXPECT_THAT(m_console.answer("fault open-refused:1"), HasSubstr("open-refused"));
}

TEST_F(ConsoleTest, PlugsWithRomCodeOnlyWhatIsUnplugged)
{
    EXPECT_EQ(m_console.answer("plug-rom"), "error: the hub is already plugged in");
    EXPECT_EQ(m_sims[0]->runningCode(), HubCode::Flash);
    EXPECT_EQ(m_console.answer("plug"), "ok");
}

TEST_F(ConsoleTest, SaysWhatIsWrongWithALine)
{
    for (const char* const line :
         {"", "   ", "Plug", "plug 0", "plug 3", "plug x", "plug -1", "plug 1x", "plug 1 2",
          "fault", "quit now", "status 99999999999999999999"}) {
        EXPECT_THAT(m_console.answer(line), StartsWith("error: ")) << line;
    }
    EXPECT_FALSE(m_console.quit());
    EXPECT_THAT(m_hosts[0].attached(), ElementsAre("super", "high"));
}

} // namespace
} // namespace vornadel::test
