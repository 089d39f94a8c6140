#pragma once

#include "tests/virtual_hub/Frames.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace vornadel::test
{

/// The other end of a connection. Every wait fails the test after 20 s.
class Peer
{
public:
    explicit Peer(int socket) : m_socket(socket) {}
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;
    ~Peer() { close(m_socket); }

    /// A socket connected to a port on 127.0.0.1.
    static int connectTo(std::uint16_t port)
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        const int connection = socket(AF_INET, SOCK_STREAM, 0);
        EXPECT_EQ(connect(connection, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        return connection;
    }

    void send(const Bytes& bytes) const
    {
        EXPECT_EQ(::send(m_socket, bytes.data(), bytes.size(), MSG_NOSIGNAL),
                  static_cast<ssize_t>(bytes.size()));
    }
    /// Exactly `size` bytes, or fewer if the connection ends first.
    Bytes receive(std::size_t size) const
    {
        Bytes bytes(size);
        std::size_t got = 0;
        while (got < size && waitForInput()) {
            const ssize_t count = recv(m_socket, bytes.data() + got, size - got, 0);
            if (count <= 0) {
                break;
            }
            got += static_cast<std::size_t>(count);
        }
        bytes.resize(got);
        return bytes;
    }
    /// Waits for the end of the connection; false if data arrives instead.
    bool hasEnded() const
    {
        char byte = 0;
        return waitForInput() && recv(m_socket, &byte, 1, 0) <= 0;
    }
    /// Whether the connection has ended. Does not wait and reads nothing.
    bool isOver() const
    {
        char byte = 0;
        return recv(m_socket, &byte, 1, MSG_PEEK | MSG_DONTWAIT) == 0;
    }

private:
    bool waitForInput() const
    {
        pollfd input = {m_socket, POLLIN, 0};
        const bool there = poll(&input, 1, 20000) == 1;
        EXPECT_TRUE(there) << "nothing came";
        return there;
    }

    const int m_socket;
};

} // namespace vornadel::test
