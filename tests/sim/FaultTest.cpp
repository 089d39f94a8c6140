#include "standins/sim/Fault.h"

#include "standins/sim/DemoImage.h"
#include "tests/sim/HubBench.h"

#include <bitset>
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

/// Each request that a fault can name, sent once.
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
        // the same two rounds for every kind: one request of it fails, in the second round
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

std::size_t bitsThatDiffer(const Bytes& a, const Bytes& b)
{
    std::size_t bits = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        bits += std::bitset<8>(static_cast<std::uint8_t>(a[i] ^ b[i])).count();
    }
    return bits;
}

TEST(FlipFault, ChangesOneProgrammedBit)
{
    for (const std::size_t length : {std::size_t{1}, std::size_t{4096}}) {
        HubBench bench(withFault("flip@write#2"));
        ASSERT_TRUE(bench.open());
        const Bytes data(length, 0x5A);
        Bytes expected(kFlashSize, 0xFF);
        for (int write = 1; write <= 3; ++write) {
            bench.erase();
            std::fill_n(expected.begin(), length, std::uint8_t{0x5A});
            EXPECT_EQ(bench.write(0, data), 0U);
            EXPECT_EQ(bench.transferred, length);
            EXPECT_EQ(bitsThatDiffer(bench.hub().flash(), expected), write == 2 ? 1U : 0U);
        }
    }
}

TEST(FlipFault, ChangesOneBitReadAndLeavesTheFlash)
{
    HubBench bench(withFault("flip@read"));
    ASSERT_TRUE(bench.open());
    Bytes buffer(4096);
    EXPECT_EQ(bench.read(0, buffer), 0U);
    const Bytes image = demoImage();
    EXPECT_EQ(bitsThatDiffer(buffer, image), 1U);
    EXPECT_EQ(bench.hub().flash(), image);
    EXPECT_EQ(bench.read(0, buffer), 0U);
    EXPECT_EQ(bitsThatDiffer(buffer, image), 0U);
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
