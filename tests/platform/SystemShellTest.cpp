#include "platform/posix/SystemShell.h"
#include "tests/support/TemporaryFolder.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vornadel::test
{

namespace
{

TEST(SystemShell, RunsACommandLineAndWaitsForIt)
{
    const TemporaryFolder folder;
    SystemShell shell;
    const std::string log = folder.path("log");
    EXPECT_EQ(shell.run("echo one   two >> " + log + "; echo three >> " + log), 0);
    EXPECT_EQ(folder.text("log"), "one two\nthree\n");
}

TEST(SystemShell, PassesTheResultOn)
{
    SystemShell shell;
    EXPECT_EQ(shell.run("true"), 0);
    EXPECT_NE(shell.run("exit 3"), 0);
    EXPECT_EQ(shell.runQuietly("true"), 0);
    EXPECT_NE(shell.runQuietly("exit 3"), 0);
}

TEST(SystemShell, KeepsStandardErrorFromTheTerminalWhenAsked)
{
    const TemporaryFolder folder;
    SystemShell shell;
    testing::internal::CaptureStderr();
    shell.run("echo loud >&2");
    shell.runQuietly("echo quiet >&2; echo one >> " + folder.path("log") + "; no-such-command");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "loud\n");
    EXPECT_EQ(folder.text("log"), "one\n");
}

TEST(SystemShell, TellsWhetherANameExists)
{
    const TemporaryFolder folder;
    SystemShell shell;
    const std::string file = folder.write("file", "");
    std::filesystem::permissions(file, std::filesystem::perms::none);
    EXPECT_TRUE(shell.exists(file)) << "existence needs no right to read";
    EXPECT_TRUE(shell.exists(folder.path("")));
    EXPECT_FALSE(shell.exists(folder.path("none")));
    std::filesystem::create_symlink(folder.path("none"), folder.path("dangling"));
    EXPECT_FALSE(shell.exists(folder.path("dangling")));
}

TEST(SystemShell, OpensOnlyPlainFilesOfTheCallersOwn)
{
    const TemporaryFolder folder;
    SystemShell shell;
    const std::string made = folder.path("made");
    EXPECT_FALSE(shell.mayRead(made));
    EXPECT_TRUE(shell.mayAppend(made));
    EXPECT_TRUE(std::filesystem::is_regular_file(made)) << "so that nobody else makes it";
    std::filesystem::remove(made);

    const std::string own = folder.write("own", "text");
    EXPECT_TRUE(shell.mayAppend(own));
    EXPECT_TRUE(shell.mayRead(own));
    EXPECT_EQ(folder.text("own"), "text");

    std::filesystem::create_symlink(own, folder.path("link"));
    std::filesystem::create_symlink(folder.path("none"), folder.path("dangling"));
    mkfifo(folder.path("pipe").c_str(), 0600);
    for (const char* name : {"link", "dangling", "pipe", ""}) {
        EXPECT_FALSE(shell.mayAppend(folder.path(name))) << name;
        EXPECT_FALSE(shell.mayRead(folder.path(name))) << name;
    }
    EXPECT_FALSE(std::filesystem::exists(folder.path("none")));

    std::filesystem::create_hard_link(own, folder.path("second"));
    EXPECT_FALSE(shell.mayAppend(own));
    std::filesystem::remove(folder.path("second"));
    if (geteuid() == 0) {
        ASSERT_EQ(chown(own.c_str(), 4711, 4711), 0);
        EXPECT_FALSE(shell.mayAppend(own));
        EXPECT_FALSE(shell.mayRead(own));
    } else {
        EXPECT_FALSE(shell.mayAppend("/etc/passwd"));
        EXPECT_TRUE(shell.mayRead("/etc/passwd")) << "root's";
    }
}

} // namespace

} // namespace vornadel::test
