#include "tests/virtual_hub/HalfBench.h"

#include <gmock/gmock.h>

namespace vornadel::test
{
namespace
{

using testing::ElementsAre;

/// The status word of a port; nothing may have changed there.
unsigned portStatus(HalfBench& bench, std::uint16_t port)
{
    const Bytes status = bench.read({0xA3, 0, 0, port, 4});
    EXPECT_EQ(status.size(), 4U);
    EXPECT_EQ(status[2], 0);
    EXPECT_EQ(status[3], 0);
    return status[0] + 256U * status[1];
}

class HubRequests : public EachHalf
{
};

TEST_P(HubRequests, TellThatTheHubIsWell)
{
    EXPECT_THAT(m_bench.read({0xA0, 0, 0, 0, 4}), ElementsAre(0, 0, 0, 0));
    EXPECT_TRUE(m_bench.accepts({0x20, 1, 0, 0, 0}));
    EXPECT_TRUE(m_bench.accepts({0x20, 1, 1, 0, 0}));
    EXPECT_TRUE(m_bench.stalls({0x20, 1, 2, 0, 0}));
    EXPECT_TRUE(m_bench.stalls({0x20, 3, 0, 0, 0}));
}

TEST_P(HubRequests, KnowFourPorts)
{
    for (std::uint16_t port = 1; port <= 4; ++port) {
        EXPECT_TRUE(m_bench.accepts({0xA3, 0, 0, port, 4}));
        EXPECT_TRUE(m_bench.accepts({0x23, 3, 8, port, 0}));
    }
    for (const std::uint16_t port : {std::uint16_t{0}, std::uint16_t{5}, std::uint16_t{255}}) {
        EXPECT_TRUE(m_bench.stalls({0xA3, 0, 0, port, 4}));
        EXPECT_TRUE(m_bench.stalls({0x23, 3, 8, port, 0}));
        EXPECT_TRUE(m_bench.stalls({0x23, 1, 8, port, 0}));
    }
    EXPECT_TRUE(m_bench.stalls({0xA3, 0, 2, 1, 8})); // the extended status is of a later hub
}

TEST_P(HubRequests, SwitchThePowerOfOnePortAtATime)
{
    const unsigned on = GetParam() == HubSpeed::SuperSpeed ? 0x02A0 : 0x0100;
    const unsigned off = GetParam() == HubSpeed::SuperSpeed ? 0x0080 : 0x0000;
    m_bench.configure();
    EXPECT_EQ(portStatus(m_bench, 2), off);
    EXPECT_TRUE(m_bench.accepts({0x23, 3, 8, 2, 0}));
    EXPECT_EQ(portStatus(m_bench, 2), on);
    EXPECT_EQ(portStatus(m_bench, 1), off);
    EXPECT_TRUE(m_bench.accepts({0x23, 1, 8, 2, 0}));
    EXPECT_EQ(portStatus(m_bench, 2), off);
}

TEST_P(HubRequests, LoseThePowerWithTheConfiguration)
{
    m_bench.configure();
    const unsigned off = portStatus(m_bench, 1);
    EXPECT_TRUE(m_bench.accepts({0x23, 3, 8, 1, 0}));
    m_bench.configure();
    EXPECT_EQ(portStatus(m_bench, 1), off);
}

TEST_P(HubRequests, ResetAPortWithNothingInIt)
{
    EXPECT_TRUE(m_bench.accepts({0x23, 3, 8, 1, 0}));
    const unsigned before = portStatus(m_bench, 1);
    EXPECT_TRUE(m_bench.accepts({0x23, 3, 4, 1, 0}));
    EXPECT_EQ(portStatus(m_bench, 1), before);
}

INSTANTIATE_TEST_SUITE_P(Halves, HubRequests,
                         testing::Values(HubSpeed::SuperSpeed, HubSpeed::HighSpeed));

/// Which features of 0 to 31 the half lets the host set, or clear.
std::vector<int> features(HubSpeed half, std::uint8_t request)
{
    std::vector<int> accepted;
    for (std::uint16_t feature = 0; feature < 32; ++feature) {
        HalfBench bench(half);
        if (bench.accepts({0x23, request, feature, 1, 0})) {
            accepted.push_back(feature);
        }
    }
    return accepted;
}

TEST(PortFeatures, AreThoseOfTheSpeed)
{
    EXPECT_THAT(features(HubSpeed::HighSpeed, 3), ElementsAre(2, 4, 8, 22));
    EXPECT_THAT(features(HubSpeed::HighSpeed, 1), ElementsAre(1, 2, 8, 16, 17, 18, 19, 20, 22));
    EXPECT_THAT(features(HubSpeed::SuperSpeed, 3), ElementsAre(4, 5, 8, 23, 24, 27, 28, 30));
    EXPECT_THAT(features(HubSpeed::SuperSpeed, 1), ElementsAre(8, 16, 19, 20, 25, 26, 29, 30));
}

TEST(SuperSpeedPorts, SwitchTheirLinkOffAndOn)
{
    HalfBench bench(HubSpeed::SuperSpeed);
    EXPECT_TRUE(bench.accepts({0x23, 3, 8, 1, 0}));
    EXPECT_TRUE(bench.accepts({0x23, 3, 5, 0x0401, 0}));
    EXPECT_EQ(portStatus(bench, 1), 0x0280U); // switched off
    EXPECT_TRUE(bench.accepts({0x23, 3, 5, 0x0501, 0}));
    EXPECT_EQ(portStatus(bench, 1), 0x02A0U); // looking for a device
}

TEST(SuperSpeedPorts, CountNoErrors)
{
    HalfBench bench(HubSpeed::SuperSpeed);
    EXPECT_THAT(bench.read({0xA3, 13, 0, 1, 2}), ElementsAre(0, 0));
    EXPECT_TRUE(bench.stalls({0xA3, 13, 0, 5, 2}));
}

TEST(SuperSpeedHub, LearnsHowDeepItSits)
{
    HalfBench bench(HubSpeed::SuperSpeed);
    EXPECT_TRUE(bench.accepts({0x20, 12, 0, 0, 0}));
    EXPECT_TRUE(bench.accepts({0x20, 12, 4, 0, 0}));
    EXPECT_TRUE(bench.stalls({0x20, 12, 5, 0, 0}));
    EXPECT_TRUE(HalfBench(HubSpeed::HighSpeed).stalls({0x20, 12, 0, 0, 0}));
}

TEST(HighSpeedHub, LetsItsTransactionTranslatorBeCleared)
{
    HalfBench bench(HubSpeed::HighSpeed);
    EXPECT_TRUE(bench.accepts({0x23, 8, 0, 1, 0}));
    EXPECT_TRUE(bench.accepts({0x23, 9, 0, 1, 0}));
    EXPECT_TRUE(bench.accepts({0x23, 11, 0, 1, 0}));
    EXPECT_TRUE(HalfBench(HubSpeed::SuperSpeed).stalls({0x23, 9, 0, 1, 0}));
}

} // namespace
} // namespace vornadel::test
