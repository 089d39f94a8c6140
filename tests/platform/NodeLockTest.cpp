// Only one program at a time has the hub: an open device holds the locks of its node and of the
// other half's.

#include "platform/linux/LibusbBus.h"
#include "tests/platform/UsbTestbed.h"
#include "tests/support/UsbDevices.h"
#include "tests/support/VirtualClock.h"

#include <cerrno>
#include <dlfcn.h>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <latch>
#include <memory>
#include <string>
#include <sys/file.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace
{

thread_local std::function<void()> afterNextLock; // called on this thread, locked or not

} // namespace

/// Replaces the C library's function and calls it.
extern "C" int flock(int file, int operation) noexcept
{
    static const auto real = reinterpret_cast<decltype(&flock)>(dlsym(RTLD_NEXT, "flock"));
    const int result = real(file, operation);
    if (const auto after = std::exchange(afterNextLock, nullptr)) {
        const int problem = errno;
        after();
        errno = problem;
    }
    return result;
}

namespace vornadel::test
{

namespace
{

class NodeLock : public testing::Test
{
protected:
    void plug() { m_testbed.plug("1-1", kVendorId, kProductId); }

    /// A hub; find() finds the half in port 1-1.
    void plugBothHalves()
    {
        m_testbed.plug("1-1", kVendorId, kProductId);
        m_testbed.plug("1-2", kVendorId, kProductId + 1);
        m_testbed.join("1-1", "1-2", "09");
    }

    std::unique_ptr<UsbDevice> find() { return findDevice(m_bus, kVendorId, kProductId); }

    UsbTestbed m_testbed;
    VirtualClock m_clock;
    LibusbBus m_bus{m_clock};
};

/// Whether another process gets the lock on the node.
bool lockedInAnotherProcess(const std::string& path)
{
    const pid_t child = fork();
    if (child == 0) {
        const int node = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
        _exit(node >= 0 && flock(node, LOCK_EX | LOCK_NB) == 0 ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

/// While it lives, root runs as a user who may do everything in a folder, except with one file.
class OrdinaryUser
{
public:
    OrdinaryUser(const std::string& folder, const std::string& forbidden) : m_root(getuid() == 0)
    {
        std::filesystem::permissions(folder, std::filesystem::perms::all);
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
            if (!entry.is_symlink()) {
                std::filesystem::permissions(entry.path(), std::filesystem::perms::all);
            }
        }
        std::filesystem::permissions(forbidden, std::filesystem::perms::none);
        EXPECT_TRUE(!m_root || setresuid(kNobody, kNobody, 0) == 0);
    }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;
    ~OrdinaryUser() { EXPECT_TRUE(!m_root || setresuid(0, 0, 0) == 0); }

private:
    static constexpr uid_t kNobody = 65534;
    const bool m_root;
};

TEST_F(NodeLock, DoesNotOpenANodeThatAnotherPartyHasLocked)
{
    plug();
    const auto device = find();
    ASSERT_NE(device, nullptr);
    const int other = ::open(m_testbed.nodePath("1-1").c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_GE(other, 0);
    ASSERT_EQ(flock(other, LOCK_EX | LOCK_NB), 0);
    EXPECT_EQ(device->open(), UsbOpenStatus::Busy);
    ::close(other);
    EXPECT_EQ(device->open(), UsbOpenStatus::Opened);
}

TEST_F(NodeLock, TellsThatTheNodeMayNotBeOpened)
{
    plug();
    const auto device = find();
    ASSERT_NE(device, nullptr);
    const std::string root = m_testbed.rootFolder();
    const OrdinaryUser user(root, root + m_testbed.nodePath("1-1"));
    EXPECT_EQ(device->open(), UsbOpenStatus::NoAccess);
}

TEST_F(NodeLock, LocksBothHalvesWhileOpen)
{
    plugBothHalves();
    const auto device = find();
    ASSERT_NE(device, nullptr);
    ASSERT_EQ(device->open(), UsbOpenStatus::Opened);
    for (const char* const port : {"1-1", "1-2"}) {
        EXPECT_FALSE(lockedInAnotherProcess(m_testbed.nodePath(port))) << port;
    }
    const auto otherHalf = findDevice(m_bus, kVendorId, kProductId + 1);
    ASSERT_NE(otherHalf, nullptr);
    EXPECT_EQ(otherHalf->open(), UsbOpenStatus::Busy);
    device->close();
    for (const char* const port : {"1-1", "1-2"}) {
        EXPECT_TRUE(lockedInAnotherProcess(m_testbed.nodePath(port))) << port;
    }
    EXPECT_EQ(otherHalf->open(), UsbOpenStatus::Opened);
}

TEST_F(NodeLock, GivesAHubToOneOfTwoThatOpenDifferentHalvesAtOnce)
{
    plugBothHalves();
    const auto half = find();
    const auto otherHalf = findDevice(m_bus, kVendorId, kProductId + 1);
    ASSERT_TRUE(half && otherHalf);
    std::latch firstTries(2);
    std::latch secondTries(2); // not reached by one that gives up after the first
    const auto open = [&](UsbDevice& device, bool& opened) {
        bool triedAgain = false;
        afterNextLock = [&] {
            firstTries.arrive_and_wait();
            afterNextLock = [&] {
                triedAgain = true;
                secondTries.arrive_and_wait();
            };
        };
        opened = device.open() == UsbOpenStatus::Opened;
        if (!triedAgain) {
            secondTries.count_down();
        }
        afterNextLock = nullptr;
    };
    bool opened = false;
    bool otherOpened = false;
    std::thread other([&] { open(*otherHalf, otherOpened); });
    open(*half, opened);
    other.join();
    EXPECT_NE(opened, otherOpened);
}

TEST_F(NodeLock, OpensAHubWhoseOtherHalfHasJustLeft)
{
    plugBothHalves();
    const auto device = find();
    ASSERT_NE(device, nullptr);
    // Sysfs is not up to date yet.
    std::filesystem::remove(m_testbed.rootFolder() + m_testbed.nodePath("1-2"));
    EXPECT_EQ(device->open(), UsbOpenStatus::Opened);
    EXPECT_FALSE(lockedInAnotherProcess(m_testbed.nodePath("1-1")));
}

TEST_F(NodeLock, OpensAHubWhoseOtherHalfItMayNotRead)
{
    plugBothHalves();
    const auto device = find();
    ASSERT_NE(device, nullptr);
    const std::string root = m_testbed.rootFolder();
    const OrdinaryUser user(root, root + m_testbed.nodePath("1-2"));
    ASSERT_NE(access(m_testbed.nodePath("1-2").c_str(), R_OK), 0);
    EXPECT_EQ(device->open(), UsbOpenStatus::Opened);
    EXPECT_FALSE(lockedInAnotherProcess(m_testbed.nodePath("1-1")));
}

TEST_F(NodeLock, LeavesAloneWhatIsNoHubOnTheSameConnector)
{
    m_testbed.plug("1-1", kVendorId, kProductId);
    m_testbed.plug("1-2", kVendorId, kProductId + 1);
    m_testbed.join("1-1", "1-2", "08");
    const auto device = find();
    ASSERT_NE(device, nullptr);
    ASSERT_EQ(device->open(), UsbOpenStatus::Opened);
    EXPECT_TRUE(lockedInAnotherProcess(m_testbed.nodePath("1-2")));
}

} // namespace

} // namespace vornadel::test
