#include "platform/posix/LockFiles.h"

#include "tests/support/TemporaryFolder.h"
#include "tests/support/WithoutPrivilege.h"

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace vornadel::test
{

namespace
{

using testing::IsEmpty;

const UsbPlace kPlace{{"1-3", 7}, {"2-3", 8}};
const UsbPlace kOtherPlace{{"1-1.4", 9}, {}};

using Owners = std::vector<std::pair<std::string, std::int64_t>>;

class LockFilesTest : public testing::Test
{
protected:
    static std::string shared(const TemporaryFolder& folder)
    {
        EXPECT_EQ(chmod(folder.path().c_str(), 01777), 0);
        return folder.path();
    }

    /// The owner that a lock of `place` fails with, or -1 if the place is free.
    std::int64_t ownerOf(const UsbPlace& place)
    {
        PlaceOwner owner;
        const std::unique_ptr<PlaceLock> lock = m_locks.lock(place, {}, owner);
        EXPECT_EQ(owner.place, place.text());
        return lock ? -1 : owner.processId;
    }

    Owners owners()
    {
        Owners all;
        for (const PlaceOwner& owner : m_locks.owners()) {
            all.emplace_back(owner.place, owner.processId);
        }
        return all;
    }

    /// Expects that neither lock() nor owners() takes what is there for a free lock, or changes it.
    void expectRefused(const std::string& what, const Owners& othersThere = {})
    {
        struct stat before = {};
        ASSERT_EQ(lstat(m_file.c_str(), &before), 0);
        EXPECT_EQ(ownerOf(kPlace), 0) << what;
        EXPECT_EQ(owners(), othersThere) << what;
        struct stat after = {};
        ASSERT_EQ(lstat(m_file.c_str(), &after), 0);
        EXPECT_EQ(before.st_ino, after.st_ino) << what;
        EXPECT_EQ(before.st_mode, after.st_mode) << what;
    }

    /// Whether another process finds this process's lock on the file.
    bool isLockedForOthers()
    {
        const pid_t child = fork();
        if (child == 0) {
            struct flock range = {};
            range.l_type = F_WRLCK;
            const int file = ::open(m_file.c_str(), O_RDWR);
            _exit(fcntl(file, F_GETLK, &range) == 0 && range.l_pid == getppid() ? 0 : 1);
        }
        int status = -1;
        waitpid(child, &status, 0);
        return status == 0;
    }

    TemporaryFolder m_folder;
    LockFiles m_locks{{shared(m_folder)}};
    const std::string m_file = m_folder.path("vornadel-2-3_1-3.lock");
};

/// Another process that holds a lock until it is ended.
class OtherProcess
{
public:
    explicit OtherProcess(const std::function<bool()>& lock)
    {
        int ready[2];
        EXPECT_EQ(pipe(ready), 0);
        m_id = fork();
        if (m_id == 0) {
            const char result = lock() ? 'y' : 'n';
            if (::write(ready[1], &result, 1) == 1) {
                pause();
            }
            _exit(0);
        }
        char result = 0;
        EXPECT_EQ(::read(ready[0], &result, 1), 1);
        EXPECT_EQ(result, 'y');
        ::close(ready[0]);
        ::close(ready[1]);
    }
    OtherProcess(const std::string& folder, const UsbPlace& place)
        : OtherProcess([&] {
              PlaceOwner owner;
              static std::unique_ptr<PlaceLock> lock; // to the end of the process
              lock = LockFiles({folder}).lock(place, {0x1209, 0xFFFF}, owner);
              return lock != nullptr;
          })
    {
    }
    OtherProcess(const OtherProcess&) = delete;
    OtherProcess& operator=(const OtherProcess&) = delete;
    ~OtherProcess() { kill(); }

    pid_t id() const { return m_id; }

    void kill()
    {
        if (m_id > 0) {
            ::kill(m_id, SIGKILL);
            waitpid(m_id, nullptr, 0);
            m_id = 0;
        }
    }

private:
    pid_t m_id = 0;
};

TEST_F(LockFilesTest, TellsWhoHasThePlaceUntilItsEnd)
{
    OtherProcess other(m_folder.path(), kPlace);
    EXPECT_EQ(ownerOf(kPlace), other.id());
    EXPECT_EQ(owners(), (Owners{{"2-3/1-3", other.id()}}));
    EXPECT_EQ(m_locks.owners().at(0).ids, (UsbIds{0x1209, 0xFFFF}));
    EXPECT_EQ(ownerOf(kOtherPlace), -1);
    other.kill();
    EXPECT_EQ(ownerOf(kPlace), -1);
    EXPECT_THAT(owners(), IsEmpty());
}

TEST_F(LockFilesTest, GivesAPlaceToOneOwnerWithinAProcess)
{
    PlaceOwner owner;
    LockFiles others({m_folder.path()});
    auto lock = m_locks.lock(kPlace, {}, owner);
    ASSERT_NE(lock, nullptr);
    EXPECT_EQ(others.lock(kPlace, {}, owner), nullptr);
    EXPECT_EQ(owner.processId, getpid());
    EXPECT_EQ(owners(), (Owners{{"2-3/1-3", getpid()}}));
    EXPECT_TRUE(isLockedForOthers());
    lock.reset();
    EXPECT_NE(others.lock(kPlace, {}, owner), nullptr);
}

TEST_F(LockFilesTest, KeepsALockWhoseFileGetsASecondName)
{
    PlaceOwner owner;
    const auto lock = m_locks.lock(kPlace, {}, owner);
    ASSERT_NE(lock, nullptr);
    std::filesystem::create_hard_link(m_file, m_folder.path("vornadel-1-1.4.lock"));
    EXPECT_EQ(ownerOf(kOtherPlace), 0);
    EXPECT_EQ(owners(), (Owners{{"2-3/1-3", getpid()}}));
    EXPECT_TRUE(isLockedForOthers());
}

TEST_F(LockFilesTest, OneOfManyThreadsGetsThePlace)
{
    std::vector<std::unique_ptr<PlaceLock>> locks(8);
    std::vector<std::thread> threads;
    threads.reserve(locks.size());
    for (auto& lock : locks) {
        threads.emplace_back([&] {
            PlaceOwner owner;
            lock = m_locks.lock(kPlace, {}, owner);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(std::count(locks.begin(), locks.end(), nullptr), 7);
}

TEST_F(LockFilesTest, LeavesAnEmptyFileForAllUsersWhateverTheUmask)
{
    const mode_t before = umask(077);
    EXPECT_EQ(ownerOf(kPlace), -1);
    umask(before);
    struct stat status = {};
    ASSERT_EQ(stat(m_file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode, S_IFREG | 0666U);
    EXPECT_EQ(status.st_size, 0);
    const WithoutPrivilege anotherUser;
    EXPECT_EQ(ownerOf(kPlace), -1);
}

TEST_F(LockFilesTest, UsesNothingButAPlainFileWithOneName)
{
    const std::string target = m_folder.write("target", "precious");
    std::filesystem::create_symlink(target, m_file);
    expectRefused("link");
    std::filesystem::remove(m_file);
    {
        const OtherProcess other(m_folder.path(), kOtherPlace);
        std::filesystem::create_symlink(m_folder.path("vornadel-1-1.4.lock"), m_file);
        expectRefused("link to a lock", {{"1-1.4", other.id()}});
    }
    std::filesystem::remove(m_file);
    std::filesystem::create_symlink(m_folder.path("nothing"), m_file);
    expectRefused("link to nothing");
    EXPECT_FALSE(std::filesystem::exists(m_folder.path("nothing")));
    std::filesystem::remove(m_file);
    std::filesystem::create_hard_link(target, m_file);
    expectRefused("second name");
    std::filesystem::remove(m_file);
    ASSERT_EQ(mkfifo(m_file.c_str(), 0666), 0);
    expectRefused("pipe");
    std::filesystem::remove(m_file);
    std::filesystem::create_directory(m_file);
    expectRefused("folder");
    std::filesystem::remove(m_file);
    m_folder.write("vornadel-2-3_1-3.lock", "somebody's text");
    EXPECT_EQ(ownerOf(kPlace), -1);
    EXPECT_EQ(m_folder.text("vornadel-2-3_1-3.lock"), "somebody's text");
    EXPECT_EQ(m_folder.text("target"), "precious");
}

TEST_F(LockFilesTest, TellsOfNoFileThatIsNoLock)
{
    const OtherProcess other([&] {
        bool locked = true;
        for (const char* const name :
             {"vornadel-\x1B[2J.lock", "vornadel-1_2_3.lock", "vornadel-.lock", "vornadel.lock",
              "vornadel-1-1", "x-1-1.lock", "vornadel-1-1.4.lock"}) {
            struct flock range = {};
            range.l_type = F_WRLCK;
            const int file = ::open(m_folder.path(name).c_str(), O_RDWR | O_CREAT, 0666);
            locked = locked && fcntl(file, F_SETLK, &range) == 0;
        }
        return locked;
    });
    EXPECT_EQ(owners(), (Owners{{"1-1.4", other.id()}}));
}

TEST_F(LockFilesTest, LocksNothingThatIsNoPlace)
{
    for (const char* const path : {"", "1/2/3", "1_2", "1 2", "1\n"}) {
        EXPECT_EQ(ownerOf({{path, 1}, {}}), 0) << path;
    }
    EXPECT_TRUE(std::filesystem::is_empty(m_folder.path()));
}

TEST_F(LockFilesTest, UsesTheFirstFolderThatAllUsersShare)
{
    TemporaryFolder own;
    TemporaryFolder open;
    ASSERT_EQ(chmod(open.path().c_str(), 0777), 0); // others may remove files
    TemporaryFolder closed;
    ASSERT_EQ(chmod(closed.path().c_str(), 01755), 0); // others may not create files
    const std::string link = own.path("link");
    std::filesystem::create_directory_symlink(m_folder.path(), link);
    const std::string file = own.write("file", "");
    TemporaryFolder first;
    shared(first);
    TemporaryFolder foreign; // its owner may remove files
    shared(foreign);
    constexpr uid_t kNobody = 65534;
    const std::string another =
        chown(foreign.path().c_str(), kNobody, kNobody) == 0 ? foreign.path() : own.path();
    PlaceOwner owner;
    LockFiles locks({own.path("nothing"), file, own.path(), open.path(), closed.path(), link,
                     another, first.path(), m_folder.path()});
    EXPECT_NE(locks.lock(kPlace, {}, owner), nullptr);
    EXPECT_TRUE(std::filesystem::exists(first.path("vornadel-2-3_1-3.lock")));

    LockFiles none({own.path()});
    EXPECT_EQ(none.lock(kPlace, {}, owner), nullptr);
    EXPECT_THAT(none.owners(), IsEmpty());
}

} // namespace

} // namespace vornadel::test
