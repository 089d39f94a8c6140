#include "standins/sim/Fault.h"

#include "tests/sim/HubBench.h"

#include <functional>
#include <gtest/gtest.h>

// What each fault does to a request, the fault sweep of the flows shows.

namespace vornadel::test
{
namespace
{

/// Sends each request that a fault can name once.
const std::vector<std::pair<const char*, std::function<std::uint32_t(HubBench&)>>>& namedRequests()
{
    static const std::vector<std::pair<const char*, std::function<std::uint32_t(HubBench&)>>>
        kRequests = {
            {"open-time", [](HubBench& bench) { return bench.openTime(); }},
            {"status",
             [](HubBench& bench) {
                 std::array<std::uint8_t, 32> block{};
                 return bench.status(block);
             }},
            {"erase", [](HubBench& bench) { return bench.erase(); }},
            {"write", [](HubBench& bench) { return bench.write(0, Bytes(8, 0)); }},
            {"read",
             [](HubBench& bench) {
                 Bytes buffer(8);
                 return bench.read(0, buffer);
             }},
            {"rom", [](HubBench& bench) { return bench.restartIntoRom(); }},
            {"flash", [](HubBench& bench) { return bench.restartIntoFlash(); }},
        };
    return kRequests;
}

TEST(StallFault, HitsTheSecondRequestOfEveryKindThatCanBeNamed)
{
    for (const auto& [name, send] : namedRequests()) {
        HubBench bench(withFault("stall@" + std::string(name) + "#2"));
        // The same two rounds for every kind: one request of it fails, in the second round.
        for (int round = 1; round <= 2; ++round) {
            for (const auto& [other, sendOther] : namedRequests()) {
                bench.hub().unplug();
                bench.hub().replug(HubCode::Rom);
                ASSERT_TRUE(bench.open());
                const bool hit = round == 2 && other == name;
                EXPECT_EQ(sendOther(bench), hit ? kSimulatedStall : 0U)
                    << name << ' ' << other << ' ' << round;
            }
        }
        EXPECT_EQ(bench.hub().faultsTriggered(), 1U);
    }
}

struct Flip {
    const char* offset; ///< as written after "flip"
    std::size_t byte;   ///< of a transfer of 4096 bytes
};

constexpr Flip kFlips[] = {{"", 0}, {":0", 0}, {":2048", 2048}, {":4095", 4095}, {":9999", 4095}};

TEST(FlipFault, ChangesOneBitOfTheByteThatIsProgrammed)
{
    for (const Flip& flip : kFlips) {
        HubBench bench(withFault("flip" + std::string(flip.offset) + "@write#2"));
        ASSERT_TRUE(bench.open());
        const Bytes data(4096, 0x5A);
        for (int write = 1; write <= 3; ++write) {
            Bytes expected(kFlashSize, 0xFF);
            std::fill_n(expected.begin(), 4096, std::uint8_t{0x5A});
            expected[flip.byte] ^= write == 2 ? 0x01 : 0x00;
            bench.erase();
            EXPECT_EQ(bench.write(0, data), 0U);
            EXPECT_EQ(bench.transferred, 4096U);
            EXPECT_EQ(bench.hub().flash(), expected);
        }
    }
}

TEST(AddedFault, WithoutPositionHitsTheNext)
{
    HubBench bench;
    ASSERT_TRUE(bench.open());
    bench.openTime();
    bench.hub().addFault({FaultKind::Stall});
    EXPECT_EQ(bench.openTime(), kSimulatedStall);
    EXPECT_EQ(bench.openTime(), 0U);
    bench.hub().addFault({FaultKind::Stall, RequestKind::OpenTime});
    EXPECT_EQ(bench.erase(), 0U);
    EXPECT_EQ(bench.openTime(), kSimulatedStall);
    bench.device->close();
    bench.hub().addFault({FaultKind::OpenRefused, {}, 0, 1});
    EXPECT_FALSE(bench.open());
    ASSERT_TRUE(bench.open());
    bench.restartIntoRom();
    bench.hub().addFault({FaultKind::Never});
    ASSERT_TRUE(bench.open());
    bench.restartIntoRom();
    EXPECT_FALSE(bench.open());
    EXPECT_EQ(bench.hub().faultsTriggered(), 4U);
}

} // namespace
} // namespace vornadel::test
