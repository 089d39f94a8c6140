#include "cli/Backups.h"

#include "cli/CommandLine.h"
#include "tests/support/FullDisk.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace vornadel::test
{

namespace
{

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;

const std::vector<std::uint8_t> kContent{1, 2, 3};
constexpr const char* kHashOfContent =
    "039058c6f2c0cb492c533b0a4d14ef77cc0f78abccced5287d84a1a2011cfb81";
/// 2026-11-22 13:47:15.123 UTC
constexpr Environment::Time kNow{1795355235123ms};

mode_t modeOf(const std::string& path)
{
    struct stat info = {};
    EXPECT_EQ(::stat(path.c_str(), &info), 0) << path;
    return info.st_mode & 07777;
}

class BackupFolder : public testing::Test
{
protected:
    std::string save(const BackupOwner& owner, Environment::Time now = kNow) const
    {
        std::string problem;
        std::string path = backups.save(owner, now, kContent, problem);
        EXPECT_EQ(path.empty(), !problem.empty()) << problem;
        return path;
    }

    const TemporaryFolder folder;
    const Backups backups{folder.path("state/backups")};
};

TEST_F(BackupFolder, NamesAFileByPlaceSerialNumberTimeAndHash)
{
    const struct {
        BackupOwner owner;
        std::string parts;
    } rows[] = {
        {{"2-3/1-3", "VN-7.a"}, "2-3+1-3_VN-7.a"},
        {{"2-1.4", ""}, "2-1.4_-"},
        {{"", "-"}, "-_%2d"},
        {{"sim-1", "../a_b %\xC3\xBC"}, "sim-1_..+a%5fb%20%25%c3%bc"},
        {{"sim-1", std::string(80, 'n')},
         "sim-1_%%feed930b893b18fbbaa20d00a3e21b7ebaa5821525d6d6ffb1b22852129654be"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.parts);
        const std::string path = save(row.owner);
        const std::string name = fs::path(path).filename().string();
        EXPECT_EQ(fs::path(path).parent_path(), backups.folder());
        EXPECT_EQ(name, row.parts + "_20261122T134715.123Z_" + kHashOfContent + ".bin");
        EXPECT_EQ(BackupName::in(name).value_or(BackupName()).text(), name);
        std::vector<std::uint8_t> bytes;
        std::string problem;
        EXPECT_TRUE(readBackup(path, bytes, problem)) << problem;
        EXPECT_EQ(bytes, kContent);
        EXPECT_EQ(modeOf(path), 0600U);
    }
    EXPECT_EQ(modeOf(backups.folder()), 0700U);
}

TEST_F(BackupFolder, NeverChangesAFile)
{
    const std::string path = save({"2-3", "A"});
    std::string problem;
    EXPECT_THAT(backups.save({"2-3", "A"}, kNow, kContent, problem), IsEmpty());
    EXPECT_THAT(problem, EndsWith(": File exists"));
}

TEST_F(BackupFolder, LeavesNothingIfAFileCannotBeWhole)
{
    std::string problem;
    {
        const FullDisk full(2);
        EXPECT_THAT(backups.save({"2-3", "A"}, kNow, kContent, problem), IsEmpty());
    }
    EXPECT_THAT(problem, EndsWith(": File too large"));
    EXPECT_TRUE(fs::is_empty(backups.folder()));

    folder.write("file", "");
    EXPECT_THAT(Backups(folder.path("file/backups")).save({}, kNow, kContent, problem), IsEmpty());
    EXPECT_THAT(problem, HasSubstr("file/backups: Not a directory"));
    EXPECT_THAT(Backups("").save({}, kNow, kContent, problem), IsEmpty());
    EXPECT_EQ(problem, "neither XDG_STATE_HOME nor HOME says where");
}

TEST_F(BackupFolder, FindsTheNewestOfAHubBySerialNumberOrElseByPlace)
{
    EXPECT_THAT(backups.newestOf({"2-3", "A"}), IsEmpty()) << "there is no folder";
    save({"2-3", "A"}, kNow + 1ms);
    const std::string movedA = save({"2-4", "A"}, kNow + 2ms);
    const std::string newestAtPlace3 = save({"2-3", "B"}, kNow + 3ms);
    save({"2-3", "A"}, kNow);
    folder.write("state/backups/2-3_A_20991122T134715.123Z_half.bin", "");
    folder.write("state/backups/notes.txt", "");
    EXPECT_EQ(backups.newestOf({"2-3", "A"}), movedA);
    EXPECT_EQ(backups.newestOf({"2-3", ""}), newestAtPlace3);
    EXPECT_THAT(backups.newestOf({"2-3", "C"}), IsEmpty());
    EXPECT_THAT(backups.newestOf({"2-5", ""}), IsEmpty());
}

TEST_F(BackupFolder, IsWhereTheCommandLineOrTheEnvironmentSays)
{
    std::map<std::string, std::string> variables;
    Environment env;
    env.variable = [&](const char* name) { return variables[name]; };
    CommandLine line;
    EXPECT_THAT(backupsOf(line, env).folder(), IsEmpty());
    variables["HOME"] = "/home/me";
    EXPECT_EQ(backupsOf(line, env).folder(), "/home/me/.local/state/vornadel/backups");
    variables["XDG_STATE_HOME"] = "relative";
    EXPECT_EQ(backupsOf(line, env).folder(), "/home/me/.local/state/vornadel/backups");
    variables["XDG_STATE_HOME"] = "/state";
    EXPECT_EQ(backupsOf(line, env).folder(), "/state/vornadel/backups");
    line.backupFolder = "here";
    EXPECT_EQ(backupsOf(line, env).folder(), "here");
}

TEST_F(BackupFolder, CannotBeMadeBelowALinkThatLeadsNowhere)
{
    std::filesystem::create_symlink("nowhere", folder.path("link"));
    std::string problem;
    EXPECT_FALSE(Backups(folder.path("link/backups")).canSave(problem));
    EXPECT_EQ(problem, folder.path("link/backups") + ": No such file or directory");
}

TEST_F(BackupFolder, GivesNoDamagedBackup)
{
    std::vector<std::uint8_t> bytes;
    std::string problem;
    const std::string path = save({"2-3", "A"});
    ASSERT_EQ(::truncate(path.c_str(), 2), 0);
    EXPECT_FALSE(readBackup(path, bytes, problem));
    EXPECT_THAT(problem, HasSubstr("so it is damaged"));

    EXPECT_TRUE(readBackup(folder.write("other.bin", kContent), bytes, problem));
    EXPECT_FALSE(readBackup(folder.write("empty.bin", ""), bytes, problem));
    EXPECT_THAT(problem, EndsWith("empty.bin: it is empty"));
    EXPECT_FALSE(readBackup(folder.path(), bytes, problem));
    EXPECT_THAT(problem, EndsWith(": it is a folder"));
    EXPECT_FALSE(readBackup(folder.path("missing"), bytes, problem));
    EXPECT_THAT(problem, EndsWith(": No such file or directory"));
}

} // namespace

} // namespace vornadel::test
