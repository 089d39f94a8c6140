#include "platform/posix/SystemShell.h"
#include "tests/platform/TempFolder.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace vornadel::test
{

namespace
{

TEST(SystemShell, RunsACommandLineAndWaitsForIt)
{
    const TempFolder folder;
    SystemShell shell;
    const std::string log = folder.path("log");
    EXPECT_EQ(shell.run("echo one   two >> " + log + "; echo three >> " + log), 0);
    EXPECT_EQ(folder.read("log"), "one two\nthree\n");
}

TEST(SystemShell, PassesTheResultOn)
{
    SystemShell shell;
    EXPECT_EQ(shell.run("true"), 0);
    EXPECT_NE(shell.run("exit 3"), 0);
}

TEST(SystemShell, TellsWhetherANameExists)
{
    const TempFolder folder;
    SystemShell shell;
    const std::string file = folder.write("file", "");
    std::filesystem::permissions(file, std::filesystem::perms::none);
    EXPECT_TRUE(shell.exists(file)) << "existence needs no right to read";
    EXPECT_TRUE(shell.exists(folder.path("")));
    EXPECT_FALSE(shell.exists(folder.path("none")));
    std::filesystem::create_symlink(folder.path("none"), folder.path("dangling"));
    EXPECT_FALSE(shell.exists(folder.path("dangling")));
}

} // namespace

} // namespace vornadel::test
