#pragma once

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <systemd/sd-bus.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace vornadel::test
{

/// The socket of a D-Bus to which the process connects. `variable` names its address in the
/// environment.
class BusSocket
{
public:
    explicit BusSocket(const char* variable) : m_variable(variable)
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const std::string path = m_folder.path("bus");
        path.copy(static_cast<char*>(address.sun_path), sizeof address.sun_path - 1);
        EXPECT_EQ(bind(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        EXPECT_EQ(listen(m_socket, 1), 0);
        setenv(m_variable, ("unix:path=" + path).c_str(), 1);
    }
    BusSocket(const BusSocket&) = delete;
    BusSocket& operator=(const BusSocket&) = delete;
    ~BusSocket()
    {
        unsetenv(m_variable);
        close(m_socket);
    }

    int accept() const { return accept4(m_socket, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK); }

private:
    const char* m_variable;
    TemporaryFolder m_folder;
    int m_socket = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
};

/// A bus that serves one connection on a thread.
class FakeBus
{
public:
    /// `handle` gets all messages after the first, on that thread, and answers as a message handler
    /// of sd-bus does.
    FakeBus(const char* variable, std::function<int(sd_bus_message*)> handle)
        : m_handle(std::move(handle)), m_socket(variable), m_thread([this] { serve(); })
    {
    }
    FakeBus(const FakeBus&) = delete;
    FakeBus& operator=(const FakeBus&) = delete;
    ~FakeBus() { waitForTheEnd(); }

    /// Waits until the client has closed its connection.
    void waitForTheEnd()
    {
        if (m_thread.joinable()) {
            m_thread.join();
        }
    }

private:
    void serve()
    {
        sd_bus* bus = nullptr;
        const int client = m_socket.accept();
        sd_bus_new(&bus);
        sd_bus_set_fd(bus, client, client);
        sd_bus_set_server(bus, 1,
                          sd_id128_t{{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 0}});
        sd_bus_negotiate_fds(bus, 1);
        sd_bus_add_filter(bus, nullptr, receive, this);
        for (int result = sd_bus_start(bus); result >= 0; result = sd_bus_process(bus, nullptr)) {
            if (result == 0) {
                sd_bus_wait(bus, UINT64_MAX);
            }
        }
        sd_bus_close_unref(bus);
    }

    static int receive(sd_bus_message* message, void* data, sd_bus_error* /*error*/)
    {
        if (sd_bus_message_is_method_call(message, "org.freedesktop.DBus", "Hello") != 0) {
            return sd_bus_reply_method_return(message, "s", ":1.1");
        }
        if (sd_bus_message_is_signal(message, "org.freedesktop.DBus.Local", nullptr) != 0) {
            return 0; // the library's own, at the end of the connection
        }
        return static_cast<FakeBus*>(data)->m_handle(message);
    }

    std::function<int(sd_bus_message*)> m_handle;
    BusSocket m_socket;
    std::thread m_thread;
};

} // namespace vornadel::test
