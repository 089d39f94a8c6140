// The server on a real loopback socket.

#include "standins/virtual_hub/ServerHost.h"

#include "tests/support/VirtualClock.h"
#include "tests/virtual_hub/Frames.h"
#include "tests/virtual_hub/HalfBench.h"
#include "tests/virtual_hub/Peer.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <memory>
#include <string>
#include <sys/resource.h>
#include <vector>

namespace vornadel::test
{
namespace
{

using testing::HasSubstr;

/// While it lives, the process can open only that many more files.
class FewFiles
{
public:
    explicit FewFiles(rlim_t more)
    {
        const int lowest = dup(STDERR_FILENO);
        close(lowest);
        getrlimit(RLIMIT_NOFILE, &m_before);
        const rlimit now = {static_cast<rlim_t>(lowest) + more, m_before.rlim_max};
        EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &now), 0);
    }
    FewFiles(const FewFiles&) = delete;
    FewFiles& operator=(const FewFiles&) = delete;
    ~FewFiles() { setrlimit(RLIMIT_NOFILE, &m_before); }

private:
    rlimit m_before = {};
};

class ServerHostTest : public testing::Test
{
protected:
    void SetUp() override
    {
        std::string error;
        ASSERT_TRUE(m_host.listen(0, error)) << error;
        ASSERT_NE(m_host.port(), 0);
    }
    void attach(HubSpeed half)
    {
        std::string error;
        ASSERT_TRUE(m_host.attach(someDevice(half), error)) << error;
    }
    void detach(HubSpeed half)
    {
        m_host.beginDetach(3, half);
        m_host.finishDetach(3, half);
    }
    std::unique_ptr<Peer> client() const
    {
        return std::make_unique<Peer>(Peer::connectTo(m_host.port()));
    }
    /// The number of devices that a new client sees; the list must be complete and end the
    /// connection.
    std::uint32_t listed() const
    {
        const std::unique_ptr<Peer> asking = client();
        asking->send(listFrame());
        const Bytes head = asking->receive(12);
        EXPECT_EQ(head.size(), 12U);
        const std::uint32_t count = wordAt(head, 8);
        const std::size_t size = std::size_t{316} * count;
        EXPECT_EQ(asking->receive(size).size(), size);
        EXPECT_TRUE(asking->hasEnded());
        return count;
    }
    /// The status word in the answer to an import.
    static std::uint32_t import(const Peer& peer, const std::string& busId)
    {
        peer.send(importFrame(busId));
        const std::uint32_t status = wordAt(peer.receive(8), 4);
        if (status == 0) {
            EXPECT_EQ(peer.receive(312).size(), 312U);
        }
        return status;
    }

    VirtualClock m_clock;
    ServerHost m_host{m_clock};
};

TEST_F(ServerHostTest, ListsWhatIsOnTheBusNow)
{
    EXPECT_EQ(listed(), 0U);
    attach(HubSpeed::SuperSpeed);
    attach(HubSpeed::HighSpeed);
    EXPECT_EQ(listed(), 2U);
    EXPECT_EQ(m_host.busId(3, HubSpeed::SuperSpeed), "2-3");
    EXPECT_EQ(m_host.busId(3, HubSpeed::HighSpeed), "1-3");
    detach(HubSpeed::SuperSpeed);
    EXPECT_EQ(listed(), 1U);
    EXPECT_EQ(m_host.busId(3, HubSpeed::SuperSpeed), "");
}

TEST_F(ServerHostTest, GivesADeviceToOneClientAtATime)
{
    attach(HubSpeed::SuperSpeed);
    const std::unique_ptr<Peer> first = client();
    ASSERT_EQ(import(*first, "2-3"), 0U);
    EXPECT_EQ(import(*client(), "2-3"), 2U);
    EXPECT_EQ(import(*client(), "1-3"), 4U); // not there
    EXPECT_EQ(listed(), 1U);
}

TEST_F(ServerHostTest, TakesADeviceBackFromAClientThatHangsUp)
{
    attach(HubSpeed::SuperSpeed);
    const std::unique_ptr<Peer> first = client();
    ASSERT_EQ(import(*first, "2-3"), 0U);
    // Breaks the protocol, so that the server closes the connection.
    first->send(word(0) + Bytes(44));
    EXPECT_TRUE(first->hasEnded());
    std::uint32_t status = 2;
    // The server notes the end just after it has closed the connection.
    for (int tried = 0; tried < 1000 && status == 2; ++tried) {
        status = import(*client(), "2-3");
    }
    EXPECT_EQ(status, 0U);
}

TEST_F(ServerHostTest, HangsUpOnTheClientWhoseDeviceLeaves)
{
    attach(HubSpeed::SuperSpeed);
    attach(HubSpeed::HighSpeed);
    const std::unique_ptr<Peer> leaving = client();
    ASSERT_EQ(import(*leaving, "2-3"), 0U);
    leaving->send(frame(statusRequest(7)));
    leaving->send(frame({8, 1, 0, 1, {0x80, 8, 0, 0, 0, 0, 1, 0}}));
    EXPECT_EQ(leaving->receive(49), answer(8, 0, 1, {0}));
    detach(HubSpeed::SuperSpeed);
    EXPECT_EQ(leaving->receive(48), answer(7, -108, 0));
    EXPECT_TRUE(leaving->hasEnded());
    attach(HubSpeed::SuperSpeed);
    EXPECT_EQ(import(*client(), "2-3"), 0U);
    EXPECT_EQ(import(*client(), "1-3"), 0U);
}

TEST_F(ServerHostTest, ClosesConnectionsBeyondItsMost)
{
    attach(HubSpeed::SuperSpeed);
    std::vector<std::unique_ptr<Peer>> idle;
    for (std::size_t number = 0; number < ServerHost::kMostConnections; ++number) {
        idle.push_back(client());
    }
    ASSERT_EQ(import(*idle.back(), "2-3"), 0U); // all of them have been accepted
    EXPECT_TRUE(client()->hasEnded());
    idle[0]->send(listFrame());
    EXPECT_EQ(idle[0]->receive(12).size(), 12U);
}

TEST_F(ServerHostTest, LetsAClientInWhenThereAreFilesAgain)
{
    std::unique_ptr<Peer> waiting;
    {
        const FewFiles few(1);
        waiting = client();
        waiting->send(listFrame());
    }
    EXPECT_EQ(waiting->receive(12).size(), 12U);
}

TEST_F(ServerHostTest, HangsUpOnEverybodyAtTheEnd)
{
    auto host = std::make_unique<ServerHost>(m_clock);
    std::string error;
    ASSERT_TRUE(host->listen(0, error)) << error;
    ASSERT_TRUE(host->attach(someDevice(HubSpeed::SuperSpeed), error));
    const Peer idle(Peer::connectTo(host->port()));
    const Peer user(Peer::connectTo(host->port()));
    ASSERT_EQ(import(user, "2-3"), 0U);
    host.reset();
    EXPECT_TRUE(idle.hasEnded());
    EXPECT_TRUE(user.hasEnded());
}

TEST_F(ServerHostTest, ListensOnOneAddressAlone)
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(m_host.port());
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK + 1); // 127.0.0.2, this machine as well
    const int connection = socket(AF_INET, SOCK_STREAM, 0);
    EXPECT_NE(connect(connection, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(errno, ECONNREFUSED);
    close(connection);
}

TEST_F(ServerHostTest, SaysWhenThePortIsTaken)
{
    ServerHost second(m_clock);
    std::string error;
    EXPECT_FALSE(second.listen(m_host.port(), error));
    EXPECT_THAT(error, HasSubstr("port " + std::to_string(m_host.port()) + " of 127.0.0.1"));
}

} // namespace
} // namespace vornadel::test
