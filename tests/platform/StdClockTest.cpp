#include "platform/StdClock.h"

#include <atomic>
#include <future>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <latch>
#include <thread>
#include <vector>

namespace vornadel::test
{

namespace
{

using std::chrono::hours;
using std::chrono::milliseconds;

TEST(StdClock, MovesForwardWhileItSleeps)
{
    StdClock clock;
    const Clock::Duration before = clock.now();
    clock.sleep(milliseconds(2));
    EXPECT_GE(clock.now() - before, milliseconds(2));
}

TEST(StdClock, InterruptEndsThisPauseAndAllLaterOnes)
{
    StdClock clock;
    std::thread sleeper([&clock] { clock.sleep(hours(1)); });
    clock.interrupt();
    sleeper.join();
    clock.sleep(hours(1));
}

TEST(StdClock, SleepsNoLongerThanUntilItIsOver)
{
    StdClock clock;
    clock.sleepUntil([] { return true; }, hours(1));

    std::atomic<bool> over = false;
    std::latch looked(2); // at the start, and again after a change that does not end it
    std::thread sleeper([&] {
        int looks = 0;
        clock.sleepUntil(
            [&] {
                if (++looks <= 2) {
                    looked.count_down();
                }
                return over.load();
            },
            hours(1));
    });
    while (!looked.try_wait()) {
        clock.wake();
    }
    over = true;
    clock.wake();
    sleeper.join();

    const Clock::Duration before = clock.now();
    clock.sleepUntil([] { return false; }, milliseconds(2));
    EXPECT_GE(clock.now() - before, milliseconds(2));
    clock.interrupt();
    clock.sleepUntil([] { return false; }, hours(1));
}

TEST(StdClock, RunsTasksInTheOrderOfTheirMoments)
{
    StdClock clock;
    std::promise<void> allOrdered;
    clock.after(hours(-9), [&] { allOrdered.get_future().wait(); });
    std::vector<int> order; // the times are hours apart, so delays of this thread cannot mix them
    std::promise<void> done;
    clock.after(milliseconds(0), [&] {
        order.push_back(4);
        done.set_value();
    });
    clock.after(hours(-2), [&] { order.push_back(2); });
    clock.after(hours(-3), [&] { order.push_back(1); });
    clock.after(hours(-1), [&] { order.push_back(3); });
    allOrdered.set_value();
    done.get_future().wait();
    EXPECT_THAT(order, testing::ElementsAre(1, 2, 3, 4));
}

TEST(StdClock, RunsATaskNotBeforeItsMoment)
{
    StdClock clock;
    const Clock::Duration before = clock.now();
    std::promise<Clock::Duration> ran;
    clock.after(milliseconds(5), [&] { ran.set_value(clock.now()); });
    EXPECT_GE(ran.get_future().get() - before, milliseconds(5));
}

TEST(StdClock, StillRunsTasksAfterAnInterrupt)
{
    StdClock clock;
    std::promise<void> done;
    clock.interrupt();
    clock.after(milliseconds(1), [&] { done.set_value(); });
    done.get_future().wait();
}

TEST(StdClock, DropsAtItsEndWhatIsNotDue)
{
    std::atomic<bool> ran = false;
    {
        StdClock clock;
        clock.after(hours(1), [&] { ran = true; });
    }
    EXPECT_FALSE(ran);
}

TEST(StdClock, WaitsAtItsEndForARunningTask)
{
    std::promise<void> entered;
    std::atomic<bool> ended = false;
    {
        StdClock clock;
        clock.after(milliseconds(0), [&] {
            entered.set_value();
            for (int i = 0; i < 10000; ++i) { // long enough to notice an end that does not wait
                std::this_thread::yield();
            }
            ended = true;
        });
        entered.get_future().wait();
    }
    EXPECT_TRUE(ended);
}

} // namespace

} // namespace vornadel::test
