#include "cli/Interruption.h"

#include "cli/CommandLine.h"
#include "hub/HubCommands.h"
#include "hub/HubTransport.h"
#include "tests/cli/Session.h"

#include <gtest/gtest.h>

#include <csignal>
#include <functional>
#include <future>

#include <pthread.h>
#include <unistd.h>

namespace vornadel::test
{

namespace
{

/// A clock that only records when it was interrupted.
class TellingClock final : public Clock
{
public:
    Duration now() override { return {}; }
    void sleep(Duration /*pause*/) override {}
    void sleepUntil(const std::function<bool()>& /*over*/, Duration /*pause*/) override {}
    void wake() override {}
    void after(Duration /*delay*/, std::function<void()> /*task*/) override {}
    void interrupt() override { m_interrupted.set_value(); }

    void waitForInterruption() { m_interrupted.get_future().wait(); }

private:
    std::promise<void> m_interrupted;
};

class EndingSignal : public testing::TestWithParam<int>
{
public:
    EndingSignal() : m_action(std::signal(GetParam(), SIG_DFL))
    {
        pthread_sigmask(SIG_SETMASK, nullptr, &m_blocked);
    }
    ~EndingSignal() override
    {
        pthread_sigmask(SIG_SETMASK, &m_blocked, nullptr);
        std::signal(GetParam(), m_action);
    }

protected:
    static bool isBlocked()
    {
        sigset_t blocked;
        pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
        return sigismember(&blocked, GetParam()) == 1;
    }

private:
    void (*m_action)(int);
    sigset_t m_blocked{};
};

TEST_P(EndingSignal, InterruptsAFailedCommandAndLeavesASuccessOne)
{
    Session session;
    ASSERT_EQ(session.list(), kExitSuccess); // fills the supported ids
    ASSERT_TRUE(Hub_OpenDevice());
    TellingClock clock;
    const Interruption interruption(clock);
    EXPECT_EQ(interruption.statusAfter(kExitFailure), kExitFailure);
    ASSERT_TRUE(isBlocked()); // otherwise it would end this program
    ASSERT_EQ(::kill(::getpid(), GetParam()), 0);
    clock.waitForInterruption();
    EXPECT_EQ(interruption.statusAfter(kExitFailure), kExitInterrupted);
    EXPECT_EQ(interruption.statusAfter(kExitSuccess), kExitSuccess);
    HubStatusBlock block{};
    EXPECT_EQ(Hub_ReadStatusBlock(block), kHubAbandoned) << "no further requests";
    Hub_CloseDevice();
}

using EndingSignalDeathTest = EndingSignal;

TEST_P(EndingSignalDeathTest, EndsTheProgramAtOnceWhenItComesTwice)
{
    EXPECT_EXIT(
        {
            TellingClock clock;
            const Interruption interruption(clock);
            ::kill(::getpid(), GetParam());
            clock.waitForInterruption();
            ::kill(::getpid(), GetParam());
            for (;;) {
                ::pause();
            }
        },
        testing::ExitedWithCode(kExitInterrupted), "");
}

TEST_P(EndingSignal, IsLeftAloneWhenItIsIgnored)
{
    std::signal(GetParam(), SIG_IGN);
    TellingClock clock;
    const Interruption interruption(clock);
    EXPECT_FALSE(isBlocked());
}

INSTANTIATE_TEST_SUITE_P(All, EndingSignal, testing::Values(SIGINT, SIGTERM, SIGHUP));
INSTANTIATE_TEST_SUITE_P(All, EndingSignalDeathTest, testing::Values(SIGINT, SIGTERM, SIGHUP));

} // namespace

} // namespace vornadel::test
