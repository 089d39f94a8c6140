#include "tests/virtual_hub/HalfBench.h"

#include <gmock/gmock.h>

namespace vornadel::test
{
namespace
{

using testing::ElementsAre;

class StandardRequests : public EachHalf
{
};

TEST_P(StandardRequests, ConfigureTheHub)
{
    EXPECT_THAT(m_bench.read({0x80, 8, 0, 0, 1}), ElementsAre(0));
    EXPECT_TRUE(m_bench.accepts({0x00, 9, 1, 0, 0}));
    EXPECT_THAT(m_bench.read({0x80, 8, 0, 0, 1}), ElementsAre(1));
    EXPECT_TRUE(m_bench.stalls({0x00, 9, 2, 0, 0}));
    EXPECT_THAT(m_bench.read({0x80, 8, 0, 0, 1}), ElementsAre(1));
    EXPECT_TRUE(m_bench.accepts({0x00, 9, 0, 0, 0}));
    EXPECT_THAT(m_bench.read({0x80, 8, 0, 0, 1}), ElementsAre(0));
}

TEST_P(StandardRequests, KnowOneInterfaceWithOneSetting)
{
    EXPECT_TRUE(m_bench.stalls({0x81, 10, 0, 0, 1})); // not before it is configured
    m_bench.configure();
    EXPECT_THAT(m_bench.read({0x81, 10, 0, 0, 1}), ElementsAre(0));
    EXPECT_TRUE(m_bench.accepts({0x01, 11, 0, 0, 0}));
    EXPECT_TRUE(m_bench.stalls({0x01, 11, 1, 0, 0}));
    EXPECT_TRUE(m_bench.stalls({0x01, 11, 0, 1, 0}));
    EXPECT_TRUE(m_bench.stalls({0x81, 10, 0, 1, 1}));
    EXPECT_THAT(m_bench.read({0x81, 0, 0, 0, 2}), ElementsAre(0, 0));
    EXPECT_TRUE(m_bench.stalls({0x81, 0, 0, 1, 2}));
}

TEST_P(StandardRequests, HaltTheStatusEndpointAndLetItGoOn)
{
    EXPECT_TRUE(m_bench.stalls({0x02, 3, 0, 0x81, 0}));
    m_bench.configure();
    EXPECT_THAT(m_bench.read({0x82, 0, 0, 0x81, 2}), ElementsAre(0, 0));
    EXPECT_TRUE(m_bench.accepts({0x02, 3, 0, 0x81, 0}));
    EXPECT_THAT(m_bench.read({0x82, 0, 0, 0x81, 2}), ElementsAre(1, 0));
    EXPECT_TRUE(m_bench.half.statusEndpointHalted());
    EXPECT_THAT(m_bench.read({0x82, 0, 0, 0x00, 2}), ElementsAre(0, 0));
    EXPECT_TRUE(m_bench.accepts({0x02, 1, 0, 0x81, 0}));
    EXPECT_FALSE(m_bench.half.statusEndpointHalted());
    EXPECT_TRUE(m_bench.stalls({0x82, 0, 0, 0x82, 2}));
    EXPECT_TRUE(m_bench.stalls({0x02, 3, 0, 0x82, 0}));
    EXPECT_TRUE(m_bench.stalls({0x02, 3, 1, 0x81, 0}));
}

TEST_P(StandardRequests, AcknowledgeAnAddress) { EXPECT_TRUE(m_bench.accepts({0x00, 5, 7, 0, 0})); }

TEST_P(StandardRequests, AreRefusedWhenUnknown)
{
    EXPECT_TRUE(m_bench.stalls({0x82, 12, 0, 0x81, 2}));   // for isochronous endpoints
    EXPECT_TRUE(m_bench.stalls({0x00, 7, 0x0100, 0, 18})); // descriptors are not to be set
    EXPECT_TRUE(m_bench.stalls({0x00, 3, 2, 0x0400, 0}));  // test mode
    EXPECT_TRUE(m_bench.stalls({0x00, 6, 0x0100, 0, 0}));  // the right request in the wrong
                                                           // direction
    EXPECT_TRUE(m_bench.stalls({0x21, 9, 0x0200, 0, 0}));  // another class
    EXPECT_TRUE(m_bench.stalls({0xE0, 0, 0, 0, 2}));       // a reserved type
}

INSTANTIATE_TEST_SUITE_P(Halves, StandardRequests,
                         testing::Values(HubSpeed::SuperSpeed, HubSpeed::HighSpeed));

TEST(HighSpeedRequests, LetTheHubWakeTheHost)
{
    HalfBench bench(HubSpeed::HighSpeed);
    EXPECT_THAT(bench.read({0x80, 0, 0, 0, 2}), ElementsAre(0x01, 0)); // self-powered
    EXPECT_TRUE(bench.accepts({0x00, 3, 1, 0, 0}));
    EXPECT_THAT(bench.read({0x80, 0, 0, 0, 2}), ElementsAre(0x03, 0));
    EXPECT_TRUE(bench.accepts({0x00, 1, 1, 0, 0}));
    EXPECT_THAT(bench.read({0x80, 0, 0, 0, 2}), ElementsAre(0x01, 0));
    EXPECT_TRUE(bench.stalls({0x00, 3, 48, 0, 0}));
    EXPECT_TRUE(bench.stalls({0x01, 3, 0, 0, 0}));
}

TEST(HighSpeedRequests, KnowNothingOfSuperSpeed)
{
    HalfBench bench(HubSpeed::HighSpeed);
    EXPECT_FALSE(bench.accepts({0x00, 48, 0, 0, 6}, Bytes(6)));
    EXPECT_TRUE(bench.stalls({0x00, 49, 40, 0, 0}));
}

TEST(SuperSpeedRequests, SwitchTheLinksLowPowerStates)
{
    HalfBench bench(HubSpeed::SuperSpeed);
    EXPECT_TRUE(bench.accepts({0x00, 3, 48, 0, 0}));
    EXPECT_THAT(bench.read({0x80, 0, 0, 0, 2}), ElementsAre(0x05, 0));
    EXPECT_TRUE(bench.accepts({0x00, 3, 49, 0, 0}));
    EXPECT_THAT(bench.read({0x80, 0, 0, 0, 2}), ElementsAre(0x0D, 0));
    EXPECT_TRUE(bench.accepts({0x00, 1, 48, 0, 0}));
    EXPECT_THAT(bench.read({0x80, 0, 0, 0, 2}), ElementsAre(0x09, 0));
    EXPECT_TRUE(bench.stalls({0x00, 3, 1, 0, 0}));
}

TEST(SuperSpeedRequests, TakeExitLatenciesAndDelay)
{
    HalfBench bench(HubSpeed::SuperSpeed);
    const TransferResult latencies = bench.send({0x00, 48, 0, 0, 6}, Bytes(6));
    EXPECT_EQ(latencies.status, 0);
    EXPECT_EQ(latencies.moved, 6U);
    EXPECT_TRUE(bench.accepts({0x00, 49, 40, 0, 0}));
}

TEST(SuperSpeedRequests, SuspendTheFunction)
{
    HalfBench bench(HubSpeed::SuperSpeed);
    EXPECT_TRUE(bench.stalls({0x01, 3, 0, 0x0100, 0}));
    bench.configure();
    EXPECT_TRUE(bench.accepts({0x01, 3, 0, 0x0100, 0}));
    EXPECT_TRUE(bench.accepts({0x01, 1, 0, 0x0100, 0}));
    EXPECT_TRUE(bench.stalls({0x01, 3, 1, 0, 0}));
}

} // namespace
} // namespace vornadel::test
