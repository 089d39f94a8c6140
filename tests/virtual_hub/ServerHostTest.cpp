// The server on a real loopback socket.

#include "standins/virtual_hub/ServerHost.h"

#include "tests/support/VirtualClock.h"
#include "tests/virtual_hub/Frames.h"
#include "tests/virtual_hub/Peer.h"
#include "tests/virtual_hub/SomeDevice.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <memory>
#include <string>
#include <vector>

namespace vornadel::test
{
namespace
{

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

TEST_F(ServerHostTest, GivesADeviceToOneClientAtATime)
{
    attach(HubSpeed::SuperSpeed);
    const std::unique_ptr<Peer> first = client();
    ASSERT_EQ(import(*first, "2-3"), 0U);
    EXPECT_EQ(import(*client(), "2-3"), 2U);
    EXPECT_EQ(import(*client(), "1-3"), 4U); // not there
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

} // namespace
} // namespace vornadel::test
