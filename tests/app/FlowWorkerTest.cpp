#include "app/FlowWorker.h"

#include "tests/support/Gate.h"
#include "tests/support/NoMoreThreads.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <thread>

namespace vornadel::test
{

namespace
{

using namespace std::chrono_literals;

constexpr auto kPatience = 30s;

void waitUntilReached(Gate& gate)
{
    while (!gate.isReached()) {
        std::this_thread::yield();
    }
}

TEST(FlowWorker, LetsASecondFlowWaitForTheFirst)
{
    FlowWorker worker;
    Gate gate;
    gate.shut();
    std::atomic<int> inside = 0;
    std::atomic<int> most = 0;
    const auto flow = [&] {
        most = std::max(most.load(), ++inside);
        gate.pass();
        --inside;
    };
    for (int i = 0; i < 4; ++i) {
        worker.start(flow);
    }
    waitUntilReached(gate);
    EXPECT_FALSE(worker.finish(0ms));
    gate.open();
    EXPECT_TRUE(worker.finish(kPatience));
    EXPECT_EQ(most, 1);
}

TEST(FlowWorker, RunsShortWorkBesideAFlow)
{
    FlowWorker worker;
    Gate gate;
    Gate beside;
    gate.shut();
    beside.shut();
    worker.start([&] { gate.pass(); });
    waitUntilReached(gate);
    worker.startBeside([&] { beside.pass(); });
    waitUntilReached(beside);
    EXPECT_TRUE(gate.isReached());
    gate.open();
    beside.open();
    EXPECT_TRUE(worker.finish(kPatience));
}

TEST(FlowWorker, StartsAFlowFromAThreadOfItsOwn)
{
    FlowWorker worker;
    std::atomic<bool> ran = false;
    worker.startBeside([&] { worker.start([&] { ran = true; }); });
    EXPECT_TRUE(worker.finish(kPatience)) << "the flow counts before its starter ends";
    EXPECT_TRUE(ran);
}

TEST(FlowWorker, GivesBackWhatAFlowHeldBeforeItCountsAsEnded)
{
    FlowWorker worker;
    auto held = std::make_shared<int>(7);
    worker.start([held] {});
    worker.startBeside([held] {});
    ASSERT_TRUE(worker.finish(kPatience));
    EXPECT_EQ(held.use_count(), 1);
}

TEST(FlowWorker, SaysThatThereIsNoThread)
{
    FlowWorker worker;
    bool ran = false;
    {
        const NoMoreThreads none;
        EXPECT_FALSE(worker.start([&] { ran = true; }));
        EXPECT_FALSE(worker.startBeside([&] { ran = true; }));
    }
    EXPECT_TRUE(worker.finish(0ms));
    EXPECT_FALSE(ran);
    EXPECT_TRUE(worker.start([&] { ran = true; }));
    EXPECT_TRUE(worker.finish(kPatience));
    EXPECT_TRUE(ran);
}

} // namespace

} // namespace vornadel::test
