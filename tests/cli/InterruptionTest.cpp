#include "cli/Interruption.h"

#include "cli/CommandLine.h"
#include "hub/HubCommands.h"
#include "hub/HubTransport.h"
#include "tests/cli/Session.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <functional>

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
    Duration now() override
    {
        const int look = ++m_looks;
        m_looks.notify_all();
        return std::chrono::milliseconds(10000 + look * m_step);
    }
    void sleep(Duration /*pause*/) override {}
    void sleepUntil(const std::function<bool()>& /*over*/, Duration /*pause*/) override {}
    void wake() override {}
    void after(Duration /*delay*/, std::function<void()> /*task*/) override {}
    void interrupt() override
    {
        m_interrupted = true;
        m_interrupted.notify_all();
    }

    void passSlowly() { m_step = 249; }
    void waitForLooks(int count) const
    {
        for (int looks = m_looks; looks < count; looks = m_looks) {
            m_looks.wait(looks);
        }
    }

    bool isInterrupted() const { return m_interrupted; }
    void waitForInterruption() const { m_interrupted.wait(false); }

private:
    std::atomic<bool> m_interrupted = false;
    std::atomic<int> m_step = 500; // milliseconds from one look at the clock to the next
    std::atomic<int> m_looks = 0;
};

constexpr std::array kSignals = {SIGINT, SIGTERM, SIGHUP};

class EndingSignal : public testing::TestWithParam<int>
{
public:
    EndingSignal()
    {
        // A shell starts programs in the background with an ignored SIGINT.
        std::transform(kSignals.begin(), kSignals.end(), m_actions.begin(),
                       [](int signal) { return std::signal(signal, SIG_DFL); });
        pthread_sigmask(SIG_SETMASK, nullptr, &m_blocked);
    }
    ~EndingSignal() override
    {
        pthread_sigmask(SIG_SETMASK, &m_blocked, nullptr);
        for (std::size_t i = 0; i < kSignals.size(); ++i) {
            std::signal(kSignals.at(i), m_actions.at(i));
        }
    }

protected:
    static bool isBlocked()
    {
        sigset_t blocked;
        pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
        return sigismember(&blocked, GetParam()) == 1;
    }

private:
    std::array<void (*)(int), kSignals.size()> m_actions{};
    sigset_t m_blocked{};
};

TEST_P(EndingSignal, EndsTheCommandAtOnceIfNoFlowRuns)
{
    Session session;
    ASSERT_EQ(session.list(), kExitSuccess); // fills the supported ids
    ASSERT_TRUE(Hub_OpenDevice());
    TellingClock clock;
    const Interruption interruption(clock, session.stop);
    EXPECT_EQ(interruption.statusAfter(kExitFailure), kExitFailure);
    ASSERT_TRUE(isBlocked()); // otherwise it would end this program
    ASSERT_EQ(::kill(::getpid(), GetParam()), 0);
    clock.waitForInterruption();
    EXPECT_EQ(interruption.statusAfter(kExitFailure), kExitInterrupted + GetParam());
    EXPECT_EQ(interruption.statusAfter(kExitSuccess), kExitSuccess);
    HubStatusBlock block{};
    EXPECT_EQ(Hub_ReadStatusBlock(block), kHubAbandoned) << "no further requests";
    Hub_CloseDevice();
}

TEST_P(EndingSignal, LeavesAFlowToItselfTheFirstTime)
{
    for (const auto phase : {StopRequest::Phase::Unchanged, StopRequest::Phase::Changing}) {
        StopRequest stop;
        EXPECT_FALSE(stop.enter(phase));
        TellingClock clock;
        const Interruption interruption(clock, stop);
        ::kill(::getpid(), GetParam());
        stop.flag()->wait(false);
        EXPECT_FALSE(clock.isInterrupted());
        EXPECT_TRUE(stop.enter(phase));
        ::kill(::getpid(), GetParam());
        clock.waitForInterruption();
        EXPECT_EQ(interruption.statusAfter(kExitFailure), kExitInterrupted + GetParam());
    }
}

TEST_P(EndingSignal, CountsOnceIfItIsSentTwice)
{
    StopRequest stop;
    stop.enter(StopRequest::Phase::Changing);
    TellingClock clock;
    clock.passSlowly();
    const Interruption interruption(clock, stop);
    ::kill(::getpid(), GetParam());
    stop.flag()->wait(false);
    ::kill(::getpid(), GetParam());
    clock.waitForLooks(2);
    EXPECT_FALSE(clock.isInterrupted());
    ::kill(::getpid(), GetParam() == SIGINT ? SIGTERM : SIGINT);
    clock.waitForInterruption();
    EXPECT_EQ(interruption.statusAfter(kExitFailure), kExitInterrupted + GetParam());
}

using EndingSignalDeathTest = EndingSignal;

TEST_P(EndingSignalDeathTest, EndsTheProgramAtOnceWhenTheFirstDidNot)
{
    EXPECT_EXIT(
        {
            TellingClock clock;
            StopRequest stop;
            const Interruption interruption(clock, stop);
            ::kill(::getpid(), GetParam());
            clock.waitForInterruption();
            ::kill(::getpid(), GetParam());
            for (;;) {
                ::pause();
            }
        },
        testing::ExitedWithCode(kExitInterrupted + GetParam()), "");
}

TEST_P(EndingSignalDeathTest, EndsTheProgramAtOnceWhileItAsks)
{
    EXPECT_EXIT(
        {
            TellingClock clock;
            StopRequest stop;
            const Interruption interruption(clock, stop);
            stop.enter(StopRequest::Phase::Asking);
            ::kill(::getpid(), GetParam());
            for (;;) {
                ::pause();
            }
        },
        testing::ExitedWithCode(kExitInterrupted + GetParam()), "");
}

TEST_P(EndingSignal, IsLeftAloneWhenItIsIgnored)
{
    std::signal(GetParam(), SIG_IGN);
    TellingClock clock;
    StopRequest stop;
    const Interruption interruption(clock, stop);
    EXPECT_FALSE(isBlocked());
}

INSTANTIATE_TEST_SUITE_P(All, EndingSignal, testing::ValuesIn(kSignals));
INSTANTIATE_TEST_SUITE_P(All, EndingSignalDeathTest, testing::ValuesIn(kSignals));

} // namespace

} // namespace vornadel::test
