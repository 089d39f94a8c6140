#include "platform/linux/PkexecRun.h"
#include "tests/support/TemporaryFolder.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <future>
#include <gtest/gtest.h>
#include <pthread.h>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <vector>

namespace vornadel::test
{

namespace
{

/// A program in place of pkexec that runs a shell text, and a pipe to receive its output.
class PkexecRunTest : public testing::Test
{
protected:
    PkexecRunTest() { mkfifo(m_folder.path("pipe").c_str(), 0600); }

    std::string program(const std::string& text)
    {
        std::string path = m_folder.write("askpass", "#!/bin/sh\n" + text);
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
        return path;
    }

    /// Waits for the writer and returns everything it wrote.
    std::string hear() { return m_folder.text("pipe"); }

    /// Waits, without sleeping, until this process has no child; a zombie counts as a child.
    static void waitUntilChildless()
    {
        while (waitid(P_ALL, 0, nullptr, WEXITED | WNOHANG | WNOWAIT) == 0 || errno != ECHILD) {
            std::this_thread::yield();
        }
    }

    TemporaryFolder m_folder;
};

TEST_F(PkexecRunTest, RunsTheScriptThroughTheProgramWithoutArguments)
{
    PkexecRun run(program("echo \"$#:$1\" > '" + m_folder.path("pipe") + "'"));
    EXPECT_TRUE(run.start("/opt/my tool/load"));
    EXPECT_EQ(hear(), "1:/opt/my tool/load\n");
}

TEST_F(PkexecRunTest, TellsOfTheStatusThatIsNotTheUsersDoing)
{
    std::promise<std::string> told;
    PkexecRun run(program("exit $(basename \"$1\")"),
                  // Throws if called twice.
                  [&told](const std::string& line) { told.set_value(line); });
    for (const char* status : {"/0", "/1", "/126", "/127"}) { // 126: the user refused, and knows it
        EXPECT_TRUE(run.start(status));
    }
    EXPECT_EQ(told.get_future().get(), "/127 ended with status 127: not authorized, no agent to "
                                       "ask for the password, or a missing command");
    waitUntilChildless();
}

TEST_F(PkexecRunTest, WaitsForTheStatusOfTheLastScript)
{
    const std::string marker = m_folder.path("marker");
    PkexecRun run(program("[ \"$1\" = last ] || exit 3; touch '" + marker + "'; exit 42"),
                  [](const std::string&) {});
    EXPECT_EQ(run.wait(), std::nullopt) << "nothing was started";
    run.start("first");
    run.start("last");
    EXPECT_EQ(run.wait(), 42);
    EXPECT_TRUE(std::filesystem::exists(marker));
    EXPECT_EQ(run.wait(), 42);
    program("kill -KILL $$");
    run.start("killed");
    EXPECT_EQ(run.wait(), std::nullopt);
    waitUntilChildless();
}

TEST_F(PkexecRunTest, RunsOneScriptAtATimeAndNoneTwiceInARow)
{
    const std::string log = m_folder.path("log");
    const std::string go = m_folder.path("go");
    mkfifo(go.c_str(), 0600);
    const std::string pkexec =
        program("echo \"begin $1\" >> '" + log + "'; echo \"$1\" > '" + m_folder.path("pipe") +
                "'; read line < '" + go + "'; echo \"end $1\" >> '" + log +
                "'; [ $1 = load ] || rm \"$0\""); // after unload, nothing can be started
    std::vector<std::string> told;
    std::promise<void> lastTold;
    PkexecRun run(pkexec, [&](const std::string& line) {
        told.push_back(line);
        if (line == "reboot could not be started") {
            lastTold.set_value();
        }
    });
    for (const char* script : {"load", "load", "unload", "unload", "unload", "reboot"}) {
        EXPECT_TRUE(run.start(script));
    }
    for (const char* script : {"load\n", "unload\n"}) {
        EXPECT_EQ(hear(), script);
        std::ofstream(go) << "go\n";
    }
    lastTold.get_future().get();
    EXPECT_EQ(m_folder.text("log"), "begin load\nend load\nbegin unload\nend unload\n");
    const std::string again = " has been started already and has not ended yet";
    EXPECT_EQ(told, (std::vector<std::string>{"load" + again, "unload" + again, "unload" + again,
                                              "reboot could not be started"}));
    waitUntilChildless();
}

TEST_F(PkexecRunTest, LetsAScriptWaitUntilTheHubIsNoLongerHeld)
{
    // Nothing of the lock but standard input, or a command that is still running would keep it.
    PkexecRun run(program("files=$(ls -l /proc/$$/fd | grep -c memfd); state=held; "
                          "flock -x -n 0 && state=free; echo \"$state $files\" > '" +
                          m_folder.path("pipe") + "'"));
    std::unique_ptr<HubHold> first = run.holdHub();
    std::unique_ptr<HubHold> second = run.holdHub();
    ASSERT_TRUE(first && second);
    // Of different names: the same one is not started again before the thread knows of its end.
    const auto startAndHear = [&](const char* script) {
        EXPECT_TRUE(run.start(script));
        std::string heard = hear();
        waitUntilChildless();
        return heard;
    };
    EXPECT_EQ(startAndHear("first"), "held 1\n");
    first.reset();
    EXPECT_EQ(startAndHear("second"), "held 1\n");
    second.reset();
    EXPECT_EQ(startAndHear("third"), "free 1\n");
}

TEST_F(PkexecRunTest, GivesNoHoldWhileAScriptTakesTheAccessAway)
{
    PkexecRun run(program("flock -x 0; echo locked > '" + m_folder.path("pipe") +
                          "'; read line < '" + m_folder.path("pipe") + "'"));
    EXPECT_TRUE(run.start("unload"));
    EXPECT_EQ(hear(), "locked\n");
    EXPECT_EQ(run.holdHub(), nullptr);
    std::ofstream(m_folder.path("pipe")) << "go\n";
    waitUntilChildless();
    EXPECT_NE(run.holdHub(), nullptr);
}

TEST_F(PkexecRunTest, StaysTheParentOfTheProgram)
{
    PkexecRun run(program("echo $PPID > '" + m_folder.path("pipe") + "'"));
    EXPECT_TRUE(run.start("load"));
    EXPECT_EQ(hear(), std::to_string(getpid()) + "\n");
}

TEST_F(PkexecRunTest, StartsTheProgramWithNoSignalBlocked)
{
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, &before);
    PkexecRun run(program("exec grep SigBlk /proc/self/status > '" + m_folder.path("pipe") + "'"));
    EXPECT_TRUE(run.start("load"));
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    EXPECT_EQ(hear(), "SigBlk:\t0000000000000000\n");
}

TEST_F(PkexecRunTest, FailsWithoutTheProgram)
{
    EXPECT_FALSE(PkexecRun("vornadel-no-such-program").start("load"));
    EXPECT_FALSE(PkexecRun(m_folder.path("none")).start("load"));
    EXPECT_FALSE(PkexecRun(m_folder.write("plain", "no program")).start("load"));
    waitUntilChildless();
}

TEST_F(PkexecRunTest, FindsTheProgramOnThePath)
{
    program("echo found > '" + m_folder.path("pipe") + "'");
    const char* const before = getenv("PATH");
    ASSERT_NE(before, nullptr);
    const std::string path = before;
    setenv("PATH", (m_folder.path("") + ":" + path).c_str(), 1);
    EXPECT_TRUE(PkexecRun("askpass").start("load"));
    setenv("PATH", path.c_str(), 1);
    EXPECT_EQ(hear(), "found\n");
}

} // namespace

} // namespace vornadel::test
