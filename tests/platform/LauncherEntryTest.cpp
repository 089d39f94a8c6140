// The real D-Bus library, with a bus in the test.

#include "platform/linux/LauncherEntry.h"
#include "tests/platform/FakeBus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vornadel::test
{
namespace
{

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* kSessionBus = "DBUS_SESSION_BUS_ADDRESS";

/// What a signal says about the launcher entry, in one line.
std::string textOf(sd_bus_message* signal)
{
    const char* entry = nullptr;
    const char* key = nullptr;
    double part = 0;
    int isVisible = 0;
    if (sd_bus_message_is_signal(signal, "com.canonical.Unity.LauncherEntry", "Update") <= 0 ||
        sd_bus_message_read(signal, "sa{sv}", &entry, 2, &key, "d", &part, &key, "b", &isVisible) <=
            0) {
        return "not understood";
    }
    return std::string(entry) + ": " + std::to_string(part).substr(0, 4) +
           (isVisible != 0 ? " shown" : " not shown");
}

TEST(LauncherEntry, ShowsAProgressUntilItEnds)
{
    std::vector<std::string> seen;
    FakeBus bus(kSessionBus, [&](sd_bus_message* message) {
        seen.push_back(textOf(message));
        return 0;
    });
    std::string problem;
    auto progress = LauncherEntry().begin(problem);
    EXPECT_THAT(problem, IsEmpty());
    ASSERT_NE(progress, nullptr);
    progress->show(0.25);
    progress.reset();
    bus.waitForTheEnd();
    const std::string entry = "application://org.vornadel.Vornadel.desktop: ";
    EXPECT_THAT(seen,
                ElementsAre(entry + "0.00 shown", entry + "0.25 shown", entry + "0.00 not shown"));
}

TEST(LauncherEntry, DoesNotWaitLongForASilentBus)
{
    const BusSocket silent(kSessionBus);
    std::string problem;
    EXPECT_EQ(LauncherEntry(std::chrono::milliseconds(1)).begin(problem), nullptr);
    EXPECT_THAT(problem, HasSubstr("timed out"));
}

TEST(LauncherEntry, DoesWithoutABus)
{
    setenv(kSessionBus, "disabled:", 1);
    std::string problem;
    EXPECT_EQ(LauncherEntry().begin(problem), nullptr);
    EXPECT_NE(problem, "");
    unsetenv(kSessionBus);
}

} // namespace
} // namespace vornadel::test
