// The order of a save's system calls, and who could read the file meanwhile. The linker redirects
// the calls below to this file.

#include "base/WholeFile.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

namespace
{

std::string permissions(const struct stat& info)
{
    char text[8];
    std::snprintf(text, sizeof text, "%04o", static_cast<unsigned>(info.st_mode & 07777U));
    return text;
}

/// The calls on regular files and folders since the test began.
std::vector<std::string>& calls()
{
    static std::vector<std::string> seen;
    return seen;
}

/// Whether the file system has hard links.
bool& linksExist()
{
    static bool exist = true;
    return exist;
}

/// What the sync of a folder fails with; 0: it succeeds.
int& errorOfFolders()
{
    static int error = 0;
    return error;
}

} // namespace

// NOLINTBEGIN(bugprone-reserved-identifier): the linker's option --wrap wants these names.
extern "C" {

ssize_t __real_write(int file, const void* bytes, std::size_t count);
int __real_fsync(int file);
int __real_rename(const char* from, const char* to);
int __real_link(const char* from, const char* to);

ssize_t __wrap_write(int file, const void* bytes, std::size_t count)
{
    struct stat info = {};
    if (::fstat(file, &info) == 0 && S_ISREG(info.st_mode)) {
        calls().push_back("write " + permissions(info));
    }
    return __real_write(file, bytes, count);
}

int __wrap_fsync(int file)
{
    struct stat info = {};
    EXPECT_EQ(::fstat(file, &info), 0);
    calls().push_back(S_ISDIR(info.st_mode)
                          ? "sync folder"
                          : "sync " + std::to_string(info.st_size) + ' ' + permissions(info));
    if (S_ISDIR(info.st_mode) && errorOfFolders() != 0) {
        errno = errorOfFolders();
        return -1;
    }
    return __real_fsync(file);
}

int __wrap_link(const char* from, const char* to)
{
    calls().emplace_back("link");
    if (!linksExist()) {
        errno = EPERM;
        return -1;
    }
    return __real_link(from, to);
}

int __wrap_rename(const char* from, const char* to)
{
    calls().emplace_back("rename");
    return __real_rename(from, to);
}
}
// NOLINTEND(bugprone-reserved-identifier)

namespace vornadel::test
{
namespace
{

namespace fs = std::filesystem;
using Calls = std::vector<std::string>;

class WholeFileOrder : public testing::Test
{
public:
    ~WholeFileOrder() override
    {
        ::umask(m_umask);
        linksExist() = true;
        errorOfFolders() = 0;
    }

protected:
    bool create(const std::string& content) const
    {
        calls().clear();
        std::string problem;
        const bool created = saveNewFile(
            m_file, {reinterpret_cast<const std::uint8_t*>(content.data()), content.size()},
            problem, 0600);
        EXPECT_EQ(created, problem.empty()) << problem;
        return created;
    }

    Calls callsOfSave() const
    {
        const std::vector<std::uint8_t> bytes(1000, 0x5A);
        std::string problem;
        calls().clear();
        EXPECT_TRUE(saveWholeFile(m_file, bytes, problem)) << problem;
        return calls();
    }

    const mode_t m_umask = ::umask(022);
    const TemporaryFolder m_folder;
    const std::string m_file = m_folder.path("file.bin");
};

TEST_F(WholeFileOrder, PutsTheContentOnDiskBeforeTheNameAndTheNameAtLast)
{
    EXPECT_EQ(callsOfSave(), (Calls{"write 0644", "sync 1000 0644", "rename", "sync folder"}));
}

TEST_F(WholeFileOrder, LetsNobodyElseReadAReplacedFileBeforeItIsComplete)
{
    m_folder.write("file.bin", "secret");
    for (const auto& [mode, text] : {std::pair{0600, "0600"}, std::pair{0664, "0664"}}) {
        fs::permissions(m_file, static_cast<fs::perms>(mode));
        EXPECT_EQ(callsOfSave(),
                  (Calls{"write 0600", std::string("sync 1000 ") + text, "rename", "sync folder"}));
    }
}

TEST_F(WholeFileOrder, GivesANewFileItsNameWhenItIsComplete)
{
    EXPECT_TRUE(create("new"));
    EXPECT_EQ(calls(), (Calls{"write 0600", "sync 3 0600", "link", "sync folder"}));
    EXPECT_EQ(m_folder.text("file.bin"), "new");
    EXPECT_EQ(fs::hard_link_count(m_file), 1U);
}

TEST_F(WholeFileOrder, NeverReplacesWhatHasTheNameOfANewFile)
{
    for (const bool links : {true, false}) {
        SCOPED_TRACE(links);
        linksExist() = links;
        m_folder.write("file.bin", "old");
        EXPECT_FALSE(create("new"));
        EXPECT_EQ(m_folder.text("file.bin"), "old");
        fs::remove(m_file);
        fs::create_symlink("nowhere", m_file);
        EXPECT_FALSE(create("new"));
        fs::remove(m_file);
        EXPECT_TRUE(create("new"));
        fs::remove(m_file);
        EXPECT_TRUE(fs::is_empty(m_folder.path()));
    }
}

TEST_F(WholeFileOrder, LeavesNoNewFileWhoseNameIsNotOnDisk)
{
    errorOfFolders() = EIO;
    EXPECT_FALSE(create("new"));
    EXPECT_TRUE(fs::is_empty(m_folder.path()));
    errorOfFolders() = EINVAL; // a file system that cannot sync folders
    EXPECT_TRUE(create("new"));
}

} // namespace
} // namespace vornadel::test
