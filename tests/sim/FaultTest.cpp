#include "standins/sim/Fault.h"

#include "standins/sim/DemoImage.h"
#include "tests/sim/HubBench.h"

#include <functional>
#include <gtest/gtest.h>

namespace vornadel::test
{
namespace
{

SimulatedHubOptions real(SimulatedHubOptions options)
{
    options.latency = SimulatedLatency::Real;
    return options;
}

TEST(StallFault, HitsTheFifthRequestAndNoOther)
{
    HubBench bench(withFault("stall@5"));
    ASSERT_TRUE(bench.open());
    for (int n = 1; n <= 10; ++n) {
        EXPECT_EQ(bench.openTime() != 0, n == 5) << n;
        EXPECT_EQ(bench.hub().faultsTriggered(), n < 5 ? 0U : 1U);
    }
    EXPECT_EQ(bench.hub().requestCount(), 10U);
}

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

TEST(VanishFault, BeforeARequestPreventsIt)
{
    HubBench bench(withFault("vanish-before@erase"));
    ASSERT_TRUE(bench.open());
    EXPECT_EQ(bench.erase(), kSimulatedNoDevice);
    EXPECT_EQ(bench.hub().flash(), demoImage());
    bench.clock.advance(60s);
    EXPECT_TRUE(listDevices(*bench.bus).empty());
    bench.hub().replug(HubCode::Rom);
    ASSERT_TRUE(bench.open());
    EXPECT_EQ(bench.erase(), 0U);
    EXPECT_EQ(bench.hub().faultsTriggered(), 1U);
}

TEST(VanishFault, AfterARequestComesTooLate)
{
    HubBench bench(withFault("vanish-after@erase"));
    ASSERT_TRUE(bench.open());
    EXPECT_EQ(bench.erase(), kSimulatedNoDevice);
    EXPECT_EQ(bench.hub().flash(), Bytes(kFlashSize, 0xFF));
    bench.clock.advance(60s);
    EXPECT_TRUE(listDevices(*bench.bus).empty());
    bench.hub().replug();
    EXPECT_EQ(listDevices(*bench.bus).size(), 2U);
}

TEST(TornFault, TakesTheFirstBytesOnly)
{
    HubBench bench(withFault("torn:3"));
    ASSERT_TRUE(bench.open());
    bench.erase();
    EXPECT_EQ(bench.write(0, Bytes(8, 0x11)), kSimulatedShort);
    EXPECT_EQ(bench.transferred, 3U);
    const Bytes flash = bench.hub().flash();
    EXPECT_EQ(Bytes(flash.begin(), flash.begin() + 5), (Bytes{0x11, 0x11, 0x11, 0xFF, 0xFF}));
    EXPECT_EQ(bench.write(0, Bytes(8, 0x11)), 0U);
    EXPECT_EQ(bench.hub().flash()[7], 0x11);
    EXPECT_EQ(bench.hub().faultsTriggered(), 1U);
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

TEST(FlipFault, ChangesOneBitReadAndLeavesTheFlash)
{
    for (const Flip& flip : kFlips) {
        HubBench bench(withFault("flip" + std::string(flip.offset) + "@read"));
        ASSERT_TRUE(bench.open());
        Bytes buffer(4096);
        EXPECT_EQ(bench.read(0, buffer), 0U);
        const Bytes image = demoImage();
        Bytes expected(image.begin(), image.begin() + 4096);
        expected[flip.byte] ^= 0x02;
        EXPECT_EQ(buffer, expected);
        EXPECT_EQ(bench.hub().flash(), image);
    }
}

TEST(IgnoreFault, SaysYesAndDoesNothing)
{
    HubBench bench(withFault("ignore@erase", withFault("ignore@write", withFault("ignore@read"))));
    ASSERT_TRUE(bench.open());
    EXPECT_EQ(bench.erase(), 0U);
    EXPECT_EQ(bench.write(0, Bytes(8, 0)), 0U);
    EXPECT_EQ(bench.transferred, 8U);
    EXPECT_EQ(bench.hub().flash(), demoImage());
    Bytes buffer(8, 0xEE);
    EXPECT_EQ(bench.read(0, buffer), 0U);
    EXPECT_EQ(buffer, Bytes(8, 0xEE));
    EXPECT_EQ(bench.hub().faultsTriggered(), 3U);
}

TEST(IgnoreFault, KeepsTheHubOnTheBus)
{
    HubBench bench(withFault("ignore@flash"));
    ASSERT_TRUE(bench.open());
    EXPECT_EQ(bench.restartIntoFlash(), 0U);
    EXPECT_TRUE(bench.runsRom());
    bench.restartIntoFlash();
    ASSERT_TRUE(bench.open());
    EXPECT_FALSE(bench.runsRom());
}

TEST(OpenFault, RefusesOpensFromItsPosition)
{
    HubBench bench(withFault("open-refused:2@3"));
    std::vector<bool> opened;
    for (int n = 0; n < 6; ++n) {
        opened.push_back(bench.open());
        bench.device->close();
    }
    EXPECT_EQ(opened, (std::vector<bool>{true, true, false, false, true, true}));
}

TEST(RestartFault, NeverLeavesTheHubAway)
{
    HubBench bench(withFault("never@2"));
    ASSERT_TRUE(bench.open());
    bench.restartIntoRom();
    ASSERT_TRUE(bench.open());
    EXPECT_EQ(bench.restartIntoRom(), 0U);
    bench.clock.advance(3600s);
    EXPECT_FALSE(bench.open());
    bench.hub().replug();
    ASSERT_TRUE(bench.open());
    bench.restartIntoRom();
    EXPECT_TRUE(bench.open());
    EXPECT_EQ(bench.hub().faultsTriggered(), 1U);
}

TEST(RestartFault, LateComesBackThatMuchLater)
{
    HubBench bench(real(withFault("late:39.5")));
    ASSERT_TRUE(bench.open());
    bench.restartIntoFlash();
    bench.clock.advance(39499ms);
    EXPECT_FALSE(bench.open());
    bench.clock.advance(1ms);
    ASSERT_TRUE(bench.open());
    bench.restartIntoRom();
    bench.clock.advance(700ms);
    EXPECT_TRUE(bench.open());
}

TEST(RestartFault, SameModeChangesNothing)
{
    SimulatedHubOptions options = withFault("same-mode");
    options.mode = HubCode::Flash;
    HubBench bench(options);
    ASSERT_TRUE(bench.open());
    bench.restartIntoRom();
    ASSERT_TRUE(bench.open());
    EXPECT_FALSE(bench.runsRom());
    bench.restartIntoRom();
    ASSERT_TRUE(bench.open());
    EXPECT_TRUE(bench.runsRom());
}

TEST(RestartFault, BounceComesBackTwice)
{
    HubBench bench(real(withFault("bounce")));
    std::vector<std::pair<Clock::Duration, UsbEvent>> events;
    ASSERT_TRUE(
        bench.bus->watch([&](UsbEvent event) { events.emplace_back(bench.clock.now(), event); }));
    ASSERT_TRUE(bench.open());
    bench.restartIntoFlash();
    bench.clock.advance(750ms);
    ASSERT_TRUE(bench.open());
    EXPECT_EQ(bench.openTime(), 0U);
    bench.clock.advance(10s);
    EXPECT_EQ(bench.openTime(), kSimulatedNoDevice);
    ASSERT_TRUE(bench.open());
    EXPECT_FALSE(bench.runsRom());
    const std::vector<std::pair<Clock::Duration, UsbEvent>> expected = {
        {0ms, UsbEvent::Detached},    {0ms, UsbEvent::Detached},    {700ms, UsbEvent::Attached},
        {700ms, UsbEvent::Attached},  {800ms, UsbEvent::Detached},  {800ms, UsbEvent::Detached},
        {1500ms, UsbEvent::Attached}, {1500ms, UsbEvent::Attached},
    };
    EXPECT_EQ(events, expected);
    EXPECT_EQ(bench.hub().faultsTriggered(), 1U);
    bench.bus->unwatch();
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
