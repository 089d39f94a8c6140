#include "standins/sim/DemoImage.h"
#include "tests/sim/HubBench.h"

#include <gtest/gtest.h>

namespace vornadel::test
{
namespace
{

SimulatedHubOptions flashOptions()
{
    SimulatedHubOptions options = romOptions();
    options.mode = HubCode::Flash;
    return options;
}

TEST(SimulatedHub, ServesItsStatusBlock)
{
    SimulatedHubOptions options = flashOptions();
    options.initialFlash = demoImage(0x1234);
    options.restartSpeed = 7;
    HubBench bench(options);
    ASSERT_TRUE(bench.open());
    std::array<std::uint8_t, 32> block{};
    block.fill(0xEE);
    EXPECT_EQ(bench.status(block), 0U);
    EXPECT_EQ(bench.transferred, 32U);
    std::array<std::uint8_t, 32> expected{};
    expected[10] = 0x12;
    expected[11] = 0x34;
    expected[13] = 7;
    expected[15] = 0x02;
    EXPECT_EQ(block, expected);
}

TEST(SimulatedHub, AcknowledgesTheOpenTimeRequestOfAnyMaker)
{
    HubBench bench(flashOptions());
    ASSERT_TRUE(bench.open());
    EXPECT_EQ(bench.openTime(), 0U);
    EXPECT_EQ(bench.send({0x40, 0x02, 0x0001, 0x4711}), 0U);
    EXPECT_NE(bench.send({0x40, 0x02, 0x0002, 0x1209}), 0U);
}

TEST(SimulatedHub, StallsWhatItDoesNotKnow)
{
    HubBench bench;
    ASSERT_TRUE(bench.open());
    Bytes buffer(64, 0);
    const std::vector<ControlRequest> unknown = {
        {0x40, 0x03, 0, 0},                                  // no such request
        {0xC0, 0x00, 0, 0},                                  // wrong direction
        {0x80, 0x09, 0, 0, {}, std::span(buffer).first(32)}, // a standard request
        {0x41, 0x00, 0, 0},                                  // to the interface
        {0x40, 0xE9, 0x0100, 0},                             // half the restart key
        {0x40, 0xE9, 0x0101, 1},                             // an index where none belongs
        {0x40, 0xE8, 0x1000, 0},                             // no sectors here
        {0x40, 0xE8, 0, 0, std::span(buffer).first(1)},      // data where none belongs
        {0xC0, 0x09, 1, 0, {}, std::span(buffer).first(32)}, // no second block
    };
    for (const ControlRequest& request : unknown) {
        EXPECT_EQ(bench.send(request), kSimulatedStall)
            << int{request.bmRequestType} << ' ' << int{request.bRequest};
    }
    EXPECT_EQ(bench.hub().flash(), demoImage());
    EXPECT_EQ(bench.hub().requestCount(), unknown.size());
    EXPECT_TRUE(bench.runsRom());
}

TEST(SimulatedHub, TakesTimeToEraseAndProgram)
{
    SimulatedHubOptions options = romOptions();
    options.latency = SimulatedLatency::Real;
    HubBench bench(options);
    ASSERT_TRUE(bench.open());
    bench.openTime();
    bench.erase();
    bench.write(0, Bytes(4096, 0));
    bench.write(4096, Bytes(257, 0));
    Bytes buffer(4096);
    bench.read(0, buffer);
    EXPECT_EQ(bench.clock.pauses(), (std::vector<Clock::Duration>{150ms, 11200us, 1400us}));
}

} // namespace
} // namespace vornadel::test
