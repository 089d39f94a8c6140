// The real D-Bus library, with a bus and a logind in the test.

#include "platform/linux/LogindInhibitor.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <systemd/sd-bus.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace vornadel::test
{
namespace
{

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// The socket of a system bus to which the process connects.
class BusSocket
{
public:
    BusSocket()
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const std::string path = m_folder.path("bus");
        path.copy(static_cast<char*>(address.sun_path), sizeof address.sun_path - 1);
        EXPECT_EQ(bind(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        EXPECT_EQ(listen(m_socket, 1), 0);
        setenv("DBUS_SYSTEM_BUS_ADDRESS", ("unix:path=" + path).c_str(), 1);
    }
    BusSocket(const BusSocket&) = delete;
    BusSocket& operator=(const BusSocket&) = delete;
    ~BusSocket()
    {
        unsetenv("DBUS_SYSTEM_BUS_ADDRESS");
        close(m_socket);
    }

    int accept() const { return accept4(m_socket, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK); }

private:
    TemporaryFolder m_folder;
    int m_socket = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
};

/// A bus with a logind on it that serves one connection.
class FakeLogind
{
public:
    explicit FakeLogind(bool grants) : m_grants(grants)
    {
        EXPECT_EQ(pipe(m_pipe), 0);
        m_thread = std::thread([this] { serve(); });
    }
    FakeLogind(const FakeLogind&) = delete;
    FakeLogind& operator=(const FakeLogind&) = delete;
    ~FakeLogind() { close(m_pipe[0]); }

    /// The arguments of the call. Waits until the client has closed its connection.
    std::vector<std::string> arguments()
    {
        m_thread.join();
        return m_arguments;
    }

    /// Whether the client holds the file that it got.
    bool isHeld() const
    {
        pollfd end{m_pipe[0], POLLIN, 0};
        return poll(&end, 1, 0) == 0;
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
        sd_bus_add_filter(bus, nullptr, answer, this);
        for (int result = sd_bus_start(bus); result >= 0; result = sd_bus_process(bus, nullptr)) {
            if (result == 0) {
                sd_bus_wait(bus, UINT64_MAX);
            }
        }
        sd_bus_close_unref(bus);
        close(m_pipe[1]);
    }

    static int answer(sd_bus_message* message, void* data, sd_bus_error* /*error*/)
    {
        auto& self = *static_cast<FakeLogind*>(data);
        if (sd_bus_message_is_method_call(message, "org.freedesktop.DBus", "Hello") != 0) {
            return sd_bus_reply_method_return(message, "s", ":1.1");
        }
        if (sd_bus_message_is_method_call(message, "org.freedesktop.login1.Manager", "Inhibit") ==
            0) {
            return 0;
        }
        const char* text = nullptr;
        while (sd_bus_message_read(message, "s", &text) > 0) {
            self.m_arguments.emplace_back(text);
        }
        return self.m_grants ? sd_bus_reply_method_return(message, "h", self.m_pipe[1])
                             : sd_bus_reply_method_errorf(message, SD_BUS_ERROR_ACCESS_DENIED,
                                                          "Permission denied");
    }

    bool m_grants;
    BusSocket m_socket;
    int m_pipe[2]{};
    std::vector<std::string> m_arguments;
    std::thread m_thread;
};

TEST(LogindInhibitor, ForbidsSleepAndShutdownWhileTheHoldLives)
{
    FakeLogind logind(true);
    std::string problem;
    auto hold = LogindInhibitor().hold("a hub is being updated", problem);
    EXPECT_THAT(logind.arguments(), ElementsAre("sleep:shutdown:handle-lid-switch", "Vornadel",
                                                "a hub is being updated", "block"));
    EXPECT_NE(hold, nullptr);
    EXPECT_THAT(problem, IsEmpty());
    EXPECT_TRUE(logind.isHeld());
    hold = nullptr;
    EXPECT_FALSE(logind.isHeld());
}

TEST(LogindInhibitor, SaysWhyLogindRefuses)
{
    FakeLogind logind(false);
    std::string problem;
    EXPECT_EQ(LogindInhibitor().hold("", problem), nullptr);
    EXPECT_EQ(problem, "Permission denied");
    logind.arguments();
}

TEST(LogindInhibitor, DoesNotWaitLongForASilentBus)
{
    const BusSocket silent;
    std::string problem;
    EXPECT_EQ(LogindInhibitor(std::chrono::milliseconds(1)).hold("", problem), nullptr);
    EXPECT_EQ(problem, "logind does not answer");
}

TEST(LogindInhibitor, DoesWithoutABus)
{
    setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nowhere/bus", 1);
    std::string problem;
    EXPECT_EQ(LogindInhibitor().hold("", problem), nullptr);
    EXPECT_THAT(problem, HasSubstr("No such file"));
    unsetenv("DBUS_SYSTEM_BUS_ADDRESS");
}

} // namespace
} // namespace vornadel::test
