// The real D-Bus library, with a bus and a logind in the test.

#include "platform/linux/LogindInhibitor.h"
#include "tests/platform/FakeBus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <poll.h>
#include <string>
#include <systemd/sd-bus.h>
#include <unistd.h>
#include <vector>

namespace vornadel::test
{
namespace
{

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* kSystemBus = "DBUS_SYSTEM_BUS_ADDRESS";

/// A logind that serves one connection.
class FakeLogind
{
public:
    explicit FakeLogind(bool grants) : m_grants(grants) { EXPECT_EQ(pipe(m_pipe), 0); }
    FakeLogind(const FakeLogind&) = delete;
    FakeLogind& operator=(const FakeLogind&) = delete;
    ~FakeLogind() { close(m_pipe[0]); }

    /// The arguments of the call. Waits until the client has closed its connection.
    std::vector<std::string> arguments()
    {
        m_bus.waitForTheEnd();
        close(m_pipe[1]);
        return m_arguments;
    }

    /// Whether the client holds the file that it got.
    bool isHeld() const
    {
        pollfd end{m_pipe[0], POLLIN, 0};
        return poll(&end, 1, 0) == 0;
    }

private:
    int answer(sd_bus_message* message)
    {
        if (sd_bus_message_is_method_call(message, "org.freedesktop.login1.Manager", "Inhibit") ==
            0) {
            return 0;
        }
        const char* text = nullptr;
        while (sd_bus_message_read(message, "s", &text) > 0) {
            m_arguments.emplace_back(text);
        }
        return m_grants ? sd_bus_reply_method_return(message, "h", m_pipe[1])
                        : sd_bus_reply_method_errorf(message, SD_BUS_ERROR_ACCESS_DENIED,
                                                     "Permission denied");
    }

    bool m_grants;
    int m_pipe[2]{};
    std::vector<std::string> m_arguments;
    FakeBus m_bus{kSystemBus, [this](sd_bus_message* message) { return answer(message); }};
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
    const BusSocket silent(kSystemBus);
    std::string problem;
    EXPECT_EQ(LogindInhibitor(std::chrono::milliseconds(1)).hold("", problem), nullptr);
    EXPECT_EQ(problem, "logind does not answer");
}

TEST(LogindInhibitor, DoesWithoutABus)
{
    setenv(kSystemBus, "unix:path=/nowhere/bus", 1);
    std::string problem;
    EXPECT_EQ(LogindInhibitor().hold("", problem), nullptr);
    EXPECT_THAT(problem, HasSubstr("No such file"));
    unsetenv(kSystemBus);
}

} // namespace
} // namespace vornadel::test
