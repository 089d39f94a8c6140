#include "driver/HubDriver.h"

#include "tests/support/FakeMachine.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WithoutPrivilege.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

namespace vornadel::test
{

namespace
{

TEST(HubDriver, CopiesTheBundleByAnEscapedPath)
{
    FakeShell shell;
    copyDriverBundle(shell, "/opt/a b/(x)");
    copyDriverBundle(shell, "/x");
    EXPECT_EQ(shell.commands,
              (std::vector<std::string>{"cp -R /opt/a\\ b/\\(x\\)/HubUpdaterDriver.kext /tmp",
                                        "cp -R /x/HubUpdaterDriver.kext /tmp"}));
}

std::string pathForACommandOf(std::size_t bytes)
{
    const std::size_t rest = std::string("cp -R /HubUpdaterDriver.kext /tmp").size();
    return std::string(bytes - rest, 'p');
}

TEST(HubDriverDeathTest, EndsTheProcessRatherThanCutACommand)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    FakeShell shell;
    copyDriverBundle(shell, pathForACommandOf(511));
    EXPECT_EQ(shell.commands.at(0).size(), 511U);
    EXPECT_EXIT(copyDriverBundle(shell, pathForACommandOf(512)),
                testing::ExitedWithCode(EXIT_FAILURE),
                "a shell command of 512 bytes does not fit into 511");
}

TEST(HubDriver, KnowsWhichPathsTheShellWouldMisread)
{
    EXPECT_TRUE(isFitForShell("/opt/a b (2) $x 'y' \"z\" gr\u00FC\u00DFe~"));
    for (const char c : {'\n', '\t', '\r', '\x01', '\x1F', '\x7F'}) {
        EXPECT_FALSE(isFitForShell(std::string("/opt/a") + c)) << static_cast<int>(c);
    }
}

/// A copy of the driver, made with the umask of a user who has a private group.
class DriverCopy : public testing::Test
{
public:
    DriverCopy() = default;
    ~DriverCopy() override { umask(m_umask); }

protected:
    std::string copy() const { return m_folder.path("copy"); }

    const TemporaryFolder m_folder;

private:
    const mode_t m_umask = umask(0002);
};

TEST_F(DriverCopy, IsMadeOnceAndUsedAgain)
{
    EXPECT_EQ(claimDriverCopy(copy()), "");
    EXPECT_EQ(std::filesystem::status(copy()).permissions(), std::filesystem::perms{0755});
    m_folder.write("copy/Contents/MacOS/driver", "driver");
    EXPECT_EQ(claimDriverCopy(copy()), "");
    const std::string nowhere = m_folder.path("no/such/place");
    EXPECT_EQ(claimDriverCopy(nowhere), nowhere + " cannot be created or examined");
}

TEST_F(DriverCopy, IsNotWrittenToThroughALinkOrIntoAPipe)
{
    using Make = std::function<void(const std::string&)>;
    const std::string mine = m_folder.write("mine", "precious");
    const Make link = [&](const std::string& name) { std::filesystem::create_symlink(mine, name); };
    const Make folderLink = [&](const std::string& name) {
        std::filesystem::create_directory_symlink(m_folder.path(), name);
    };
    const Make secondName = [&](const std::string& name) {
        std::filesystem::create_hard_link(mine, name);
    };
    const Make pipe = [](const std::string& name) { mkfifo(name.c_str(), 0600); };

    for (const Make& make : {link, folderLink, secondName, pipe}) {
        make(copy());
        EXPECT_EQ(claimDriverCopy(copy()), copy() + " is not a folder");
        std::filesystem::remove(copy());
    }
    const std::string odd = " is neither a folder nor a plain file";
    for (const auto& [make, why] :
         std::vector<std::pair<Make, std::string>>{{link, odd},
                                                   {folderLink, odd},
                                                   {pipe, odd},
                                                   {secondName, " has a second hard link"}}) {
        for (const char* place : {"/hub-access.rules", "/Contents/MacOS/driver"}) {
            std::filesystem::create_directories(copy() + "/Contents/MacOS");
            make(copy() + place);
            EXPECT_EQ(claimDriverCopy(copy()), copy() + place + why);
            std::filesystem::remove_all(copy());
        }
    }
}

TEST_F(DriverCopy, CanBeWrittenToByNobodyElseFromThenOn)
{
    const std::string inner = copy() + "/Contents";
    std::filesystem::create_directories(inner);
    ASSERT_EQ(chmod(copy().c_str(), 0777), 0);
    EXPECT_EQ(claimDriverCopy(copy()), "");
    for (const std::string& folder : {copy(), inner}) {
        EXPECT_EQ(std::filesystem::status(folder).permissions(), std::filesystem::perms{0755})
            << folder;
    }
    if (geteuid() == 0) {
        for (const std::string& folder : {inner, copy()}) {
            ASSERT_EQ(chown(folder.c_str(), 4711, 4711), 0);
            EXPECT_EQ(claimDriverCopy(copy()), folder + " belongs to another user");
        }
    } else {
        EXPECT_EQ(claimDriverCopy("/usr"), "/usr belongs to another user");
    }
}

TEST_F(DriverCopy, IsNotUsedIfItHoldsAFolderThatCannotBeLookedThrough)
{
    ASSERT_EQ(chmod(m_folder.path().c_str(), 0777), 0);
    const WithoutPrivilege nobody;
    std::filesystem::create_directories(copy() + "/Contents");
    ASSERT_EQ(chmod((copy() + "/Contents").c_str(), 0300), 0);
    EXPECT_EQ(claimDriverCopy(copy()), copy() + " cannot be searched");
    ASSERT_EQ(chmod((copy() + "/Contents").c_str(), 0700), 0); // or only root could remove it
}

TEST(HubDriver, StartsAScriptByItsPathAsItStands)
{
    FakePrivilegedRun privileged;
    EXPECT_TRUE(startScript(privileged, "/opt/a b/(x)", "load"));
    EXPECT_EQ(privileged.scripts, std::vector<std::string>{"/opt/a b/(x)/load"});
    privileged.able = false;
    EXPECT_FALSE(startScript(privileged, "/x", "reboot"));
}

TEST(HubDriver, NeedsARebootOnlyWhereTheBootArgumentIsWantedAndMissing)
{
    EXPECT_TRUE(needsReboot(true, ""));
    EXPECT_TRUE(needsReboot(true, "boot-args\tkext-dev-mode=0\n"));
    EXPECT_FALSE(needsReboot(true, "boot-args\tdebug=0x144 kext-dev-mode=1\n"));
    EXPECT_FALSE(needsReboot(false, ""));
}

} // namespace

} // namespace vornadel::test
