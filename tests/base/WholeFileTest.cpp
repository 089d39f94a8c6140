#include "base/WholeFile.h"
#include "tests/support/FullDisk.h"
#include "tests/support/Resources.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WithoutPrivilege.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace vornadel::test
{
namespace
{

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

constexpr uid_t kNobody = 65534;
constexpr gid_t kSharedGroup = 4711;

class WholeFile : public testing::Test
{
protected:
    std::string path(const std::string& name) const { return m_folder.path(name); }

    std::string make(const std::string& name, const std::string& content) const
    {
        return m_folder.write(name, content);
    }

    static std::string contentOf(const std::string& file)
    {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    }

    static mode_t modeOf(const std::string& file)
    {
        struct stat info = {};
        EXPECT_EQ(::stat(file.c_str(), &info), 0);
        return info.st_mode & 07777;
    }

    std::vector<std::string> names() const
    {
        std::vector<std::string> found;
        for (const auto& entry : fs::directory_iterator(m_folder.path())) {
            found.push_back(entry.path().filename().string());
        }
        return found;
    }

    static bool save(const std::string& file, const std::string& content, std::string& problem)
    {
        return saveWholeFile(
            file, {reinterpret_cast<const std::uint8_t*>(content.data()), content.size()}, problem);
    }

    static void expectSaved(const std::string& file, const std::string& content)
    {
        std::string problem;
        const std::string before = contentOf(file);
        const bool existed = fs::exists(file);
        EXPECT_TRUE(canBeSaved(file, problem)) << problem;
        EXPECT_EQ(contentOf(file), before) << "nothing is saved by asking";
        EXPECT_EQ(fs::exists(file), existed);
        EXPECT_TRUE(save(file, content, problem)) << problem;
        EXPECT_THAT(problem, IsEmpty());
        EXPECT_EQ(contentOf(file), content);
    }

    static void expectRefused(const std::string& file, const std::string& why)
    {
        std::string problem;
        EXPECT_FALSE(save(file, "new", problem)) << file;
        EXPECT_EQ(problem, file + ": " + why);
        std::string asked;
        EXPECT_FALSE(canBeSaved(file, asked)) << file;
        EXPECT_EQ(asked, problem);
    }

    const TemporaryFolder m_folder;
};

TEST_F(WholeFile, MakesANewFileThatTheUmaskAllows)
{
    const mode_t before = ::umask(027);
    expectSaved(path("new.bin"), "content");
    ::umask(before);
    EXPECT_EQ(modeOf(path("new.bin")), 0640U);
    EXPECT_THAT(names(), ElementsAre("new.bin"));
}

TEST_F(WholeFile, KeepsEveryByte)
{
    std::string bytes;
    for (int i = 0; i < 70000; ++i) {
        bytes += static_cast<char>(i * 7);
    }
    expectSaved(path("new.bin"), bytes);
    expectSaved(path("empty.bin"), "");
}

TEST_F(WholeFile, LeavesNoFileOpen)
{
    const std::size_t before = Resources::now().descriptors;
    expectSaved(path("new.bin"), "content");
    EXPECT_EQ(Resources::now().descriptors, before);
}

TEST_F(WholeFile, KeepsPermissionsAndOwnerOfTheFileThatItReplaces)
{
    for (const mode_t mode : {0600U, 0640U, 0666U, 0755U, 04711U}) {
        SCOPED_TRACE(mode);
        const std::string file = make("old.bin", "old");
        ASSERT_TRUE(::geteuid() != 0 || ::chown(file.c_str(), kNobody, kSharedGroup) == 0);
        ASSERT_EQ(::chmod(file.c_str(), mode), 0);
        struct stat before = {};
        ASSERT_EQ(::stat(file.c_str(), &before), 0);
        expectSaved(file, "new");
        struct stat after = {};
        ASSERT_EQ(::stat(file.c_str(), &after), 0);
        EXPECT_EQ(after.st_mode, before.st_mode);
        EXPECT_EQ(after.st_uid, before.st_uid);
        EXPECT_EQ(after.st_gid, before.st_gid);
        ASSERT_EQ(::unlink(file.c_str()), 0);
    }
}

TEST_F(WholeFile, WritesIntoTheWorkingFolderWhenTheNameHasNone)
{
    const fs::path before = fs::current_path();
    fs::current_path(m_folder.path());
    expectSaved("here.bin", "content");
    fs::current_path(before);
    EXPECT_EQ(contentOf(path("here.bin")), "content");
}

TEST_F(WholeFile, WritesTheFileThatALinkLeadsToAndKeepsTheLink)
{
    fs::create_directory(path("far"));
    const std::string file = make("far/old.bin", "old");
    fs::create_symlink("far/old.bin", path("relative"));
    fs::create_symlink(path("relative"), path("link to a link"));
    expectSaved(path("link to a link"), "new");
    EXPECT_EQ(contentOf(file), "new");
    EXPECT_TRUE(fs::is_symlink(path("relative")));
    EXPECT_TRUE(fs::is_symlink(path("link to a link")));
    EXPECT_THAT(names(), UnorderedElementsAre("far", "relative", "link to a link"));
}

TEST_F(WholeFile, MakesTheFileThatADanglingLinkLeadsTo)
{
    fs::create_directory(path("far"));
    fs::create_symlink("far/new.bin", path("relative"));
    fs::create_symlink("relative", path("link"));
    expectSaved(path("link"), "new");
    EXPECT_TRUE(fs::is_symlink(path("link")));
    EXPECT_EQ(contentOf(path("far/new.bin")), "new");
}

TEST_F(WholeFile, DoesNotFollowLinksWithoutEnd)
{
    fs::create_symlink("2", path("1"));
    fs::create_symlink("1", path("2"));
    expectRefused(path("1"), "Too many levels of symbolic links");

    constexpr int kMostThatTheSystemFollows = 40;
    for (int i = 0; i < kMostThatTheSystemFollows; ++i) {
        fs::create_symlink("link" + std::to_string(i + 1), path("link" + std::to_string(i)));
    }
    expectRefused(path("link0"),
                  "Too many levels of symbolic links"); // checked even for a dangling link
    expectSaved(path("link1"), "new");
    EXPECT_EQ(contentOf(path("link40")), "new");
}

TEST_F(WholeFile, TakesTheLongestNameThereIs)
{
    expectSaved(path(std::string(255, 'n')), "content");
    expectRefused(path(std::string(256, 'n')), "File name too long");
}

TEST_F(WholeFile, GoesRoundUpTo99FilesThatEarlierRunsLeftBehind)
{
    const auto left = [](int number) {
        return ".vornadel-" + std::to_string(::getpid()) + '-' + std::to_string(number);
    };
    for (int number = 1; number < 100; ++number) {
        make(left(number), "half a file");
    }
    expectSaved(path("new.bin"), "with the first name");
    make(left(0), "half a file");
    expectRefused(path("new.bin"), "File exists");
    ASSERT_TRUE(fs::remove(path(left(99))));
    expectSaved(path("new.bin"), "with the last name");
    for (int number = 0; number < 99; ++number) {
        EXPECT_EQ(contentOf(path(left(number))), "half a file");
    }
    EXPECT_EQ(names().size(), 100U);
}

TEST_F(WholeFile, RefusesWhatIsNoRegularFile)
{
    fs::create_directory(path("folder"));
    ASSERT_EQ(::mkfifo(path("pipe").c_str(), 0600), 0); // opening it for writing would block
    fs::create_symlink("/dev/full", path("link to a device"));
    fs::create_symlink("folder", path("link to a folder"));
    expectRefused(path("folder"), "it is a folder");
    expectRefused(path("folder/"), "it is a folder");
    expectRefused(path("link to a folder"), "it is a folder");
    expectRefused(path("pipe"), "it is not a regular file");
    expectRefused("/dev/full", "it is not a regular file");
    expectRefused(path("link to a device"), "it is not a regular file");
    EXPECT_TRUE(fs::is_character_file("/dev/full"));
    EXPECT_TRUE(fs::is_fifo(path("pipe")));
    EXPECT_TRUE(fs::is_empty(path("folder")));
}

TEST_F(WholeFile, RefusesAPathThatLeadsNowhere)
{
    make("file", "old");
    fs::create_symlink("loop", path("loop"));
    fs::create_symlink("missing/new.bin", path("link"));
    expectRefused("", "No such file or directory");
    expectRefused(path("missing/new.bin"), "No such file or directory");
    expectRefused(path("missing/"), "No such file or directory");
    expectRefused(path("link"), "No such file or directory");
    expectRefused(path("file/new.bin"), "Not a directory");
    expectRefused(path("loop"), "Too many levels of symbolic links");
    EXPECT_EQ(contentOf(path("file")), "old");
    EXPECT_THAT(names(), UnorderedElementsAre("file", "loop", "link"));
}

TEST_F(WholeFile, LeavesTheOldFileWhenTheDiskIsFull)
{
    const std::string content(5000, 'n');
    for (const rlim_t room : {0UL, 1UL, 4096UL, 4999UL}) {
        SCOPED_TRACE(room);
        const std::string file = make("old.bin", "old");
        std::string problem;
        {
            const FullDisk full(room);
            EXPECT_FALSE(save(file, content, problem));
            EXPECT_FALSE(save(path("new.bin"), content, problem));
        }
        EXPECT_EQ(problem, path("new.bin") + ": File too large");
        EXPECT_EQ(contentOf(file), "old");
        EXPECT_THAT(names(), ElementsAre("old.bin"));
    }
    const FullDisk justLargeEnough(5000);
    expectSaved(path("old.bin"), content);
}

TEST_F(WholeFile, LeavesTheOldFileInAFolderThatMayNotBeWritten)
{
    const std::string file = make("old.bin", "old");
    ASSERT_EQ(::chmod(file.c_str(), 0666), 0);
    ASSERT_EQ(::chmod(m_folder.path().c_str(), 0555), 0);
    {
        const WithoutPrivilege ordinary;
        expectRefused(file, "Permission denied");
        expectRefused(path("new.bin"), "Permission denied");
    }
    ASSERT_EQ(::chmod(m_folder.path().c_str(), 0755), 0);
    EXPECT_EQ(contentOf(file), "old");
    EXPECT_THAT(names(), ElementsAre("old.bin"));
}

TEST_F(WholeFile, LeavesAFileThatMayNotBeWrittenThoughItsFolderMay)
{
    const std::string file = make("old.bin", "old");
    ASSERT_EQ(::chmod(file.c_str(), 0444), 0);
    ASSERT_EQ(::chmod(m_folder.path().c_str(), 0777), 0);
    {
        const WithoutPrivilege ordinary;
        expectRefused(file, "Permission denied");
        expectSaved(path("new.bin"), "content");
    }
    EXPECT_EQ(contentOf(file), "old");
    EXPECT_THAT(names(), UnorderedElementsAre("old.bin", "new.bin"));
}

TEST_F(WholeFile, KeepsTheGroupOfAForeignFileWhereTheUserIsAMember)
{
    const std::string file = make("old.bin", "old");
    const bool root = ::geteuid() == 0; // without root the file is the user's own
    const gid_t group = root ? kSharedGroup : ::getegid();
    std::vector<gid_t> groups(static_cast<std::size_t>(::getgroups(0, nullptr)));
    ASSERT_GE(::getgroups(static_cast<int>(groups.size()), groups.data()), 0);
    ASSERT_TRUE(!root || ::setgroups(1, &group) == 0);
    ASSERT_EQ(::chown(file.c_str(), ::geteuid(), group), 0);
    ASSERT_EQ(::chmod(file.c_str(), 06777), 0);
    ASSERT_EQ(::chmod(m_folder.path().c_str(), 0777), 0);
    {
        const WithoutPrivilege ordinary;
        expectSaved(file, "new");
    }
    EXPECT_TRUE(!root || ::setgroups(groups.size(), groups.data()) == 0);
    EXPECT_EQ(modeOf(file), root ? 02777U : 06777U);
    struct stat info = {};
    ASSERT_EQ(::stat(file.c_str(), &info), 0);
    EXPECT_EQ(info.st_gid, group);
}

TEST_F(WholeFile, ReplacesAForeignFileThatMayBeWrittenWithoutItsSetIdBits)
{
    const std::string file = make("old.bin", "old");
    ASSERT_TRUE(::geteuid() != 0 || ::chown(file.c_str(), 0, kSharedGroup) == 0);
    ASSERT_EQ(::chmod(file.c_str(), 06777), 0);
    ASSERT_EQ(::chmod(m_folder.path().c_str(), 0777), 0);
    const bool foreign = ::geteuid() == 0; // only root can give the file to another user
    {
        const WithoutPrivilege ordinary;
        expectSaved(file, "new");
    }
    EXPECT_EQ(modeOf(file), foreign ? 0777U : 06777U);
}

} // namespace
} // namespace vornadel::test
