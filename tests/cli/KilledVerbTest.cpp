// A backup must be worth something after any end of the program: it is whole, or it is not there.

#include "cli/Backups.h"
#include "standins/sim/DemoImage.h"
#include "tests/cli/Session.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <string>

#include <sys/wait.h>
#include <unistd.h>

namespace vornadel::test
{
namespace
{

/// A verb that changes the flash, in a process that is killed at one of its requests.
class KilledVerb : public testing::TestWithParam<const char*>
{
protected:
    /// Whether it was; false if it had ended before.
    static bool isKilledAt(unsigned request, const std::string& folder)
    {
        const pid_t child = fork();
        if (child == 0) {
            run(request, folder);
            _exit(0);
        }
        int status = 0;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        return WIFSIGNALED(status);
    }

private:
    static void run(unsigned killedAt, const std::string& folder)
    {
        Session session("latency=none");
        session.hub().onRequest = [&](const ControlRequest&) {
            if (session.hub().requestCount() == killedAt) {
                std::filesystem::remove_all(session.folder.path());
                std::filesystem::remove_all(session.state.path());
                static_cast<void>(kill(getpid(), SIGKILL));
            }
        };
        CommandLine line = session.line(GetParam());
        line.yes = true;
        line.backupFolder = folder;
        if (line.verb != verbCalled("erase")) {
            line.image = session.folder.write("new.bin", demoImage(kDemoVersion101));
        }
        session.run(line);
    }
};

} // namespace

TEST_P(KilledVerb, LeavesAWholeBackupOrNone)
{
    bool wasThere = false;
    unsigned request = 1;
    for (;; ++request) {
        SCOPED_TRACE(request);
        const TemporaryFolder folder(placeInMemory());
        if (!isKilledAt(request, folder.path())) {
            break;
        }
        std::string backup;
        for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
            ASSERT_EQ(backup, "") << "the second is " << entry.path();
            backup = entry.path().string();
        }
        EXPECT_TRUE(!backup.empty() || !wasThere);
        wasThere = !backup.empty();
        if (wasThere) {
            std::vector<std::uint8_t> bytes;
            std::string problem;
            ASSERT_TRUE(BackupName::in(std::filesystem::path(backup).filename().string()));
            EXPECT_TRUE(readBackup(backup, bytes, problem)) << problem;
            EXPECT_TRUE(bytes == demoImage());
        }
    }
    EXPECT_TRUE(wasThere) << "at the last request";
    EXPECT_GT(request, 20U);
}

INSTANTIATE_TEST_SUITE_P(EveryRequest, KilledVerb, testing::Values("update", "restore", "erase"),
                         [](const auto& row) { return std::string(row.param); });

} // namespace vornadel::test
