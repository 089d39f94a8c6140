#include "app/MainThread.h"

#include "tests/app/ToolUnderTest.h"

#include <atomic>
#include <string>
#include <thread>

namespace vornadel::test
{

namespace
{

TEST(MainThread, RunsAPostedTaskLaterEvenFromItself)
{
    MainThread main;
    bool ran = false;
    main.post([&] { ran = true; });
    EXPECT_FALSE(ran);
    settleEvents();
    EXPECT_TRUE(ran);
    ran = false;
    main.postAndWait([&] { ran = true; });
    EXPECT_TRUE(ran) << "waiting for itself would never end";
}

TEST(MainThread, RunsTasksOfAnotherThreadOnItselfInTheirOrder)
{
    MainThread main;
    std::string order; // written on the main thread only
    std::thread::id ranOn;
    std::atomic<bool> done = false;
    std::thread worker([&] {
        std::string expected;
        for (char c = 'a'; c <= 'z'; ++c) {
            main.post([&order, c] { order += c; });
            expected += c;
            if (c % 5 == 0) {
                main.postAndWait([&order, expected] { EXPECT_EQ(order, expected); });
            }
        }
        main.postAndWait([&] { ranOn = std::this_thread::get_id(); });
        done = true;
    });
    EXPECT_TRUE(waitFor([&] { return done.load(); }));
    worker.join();
    EXPECT_EQ(order, "abcdefghijklmnopqrstuvwxyz");
    EXPECT_EQ(ranOn, std::this_thread::get_id());
}

TEST(MainThread, FreesAWaiterAtTheEndAndRunsNothingMore)
{
    MainThread main;
    std::atomic<bool> ran = false;
    std::atomic<bool> posting = false;
    std::thread worker([&] {
        posting = true;
        main.postAndWait([&] { ran = true; });
        main.postAndWait([&] { ran = true; }); // no longer waits
        main.post([&] { ran = true; });
    });
    while (!posting) {
        std::this_thread::yield();
    }
    main.stopWaiting(); // no event has run in between
    worker.join();
    settleEvents();
    EXPECT_FALSE(ran);
}

} // namespace

} // namespace vornadel::test
