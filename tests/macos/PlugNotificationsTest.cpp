// Notifications of devices that come and go, call by call.

#include "tests/macos/MacTest.h"

#include <vector>

namespace vornadel::test
{
namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

class PlugNotificationsTest : public MacTest
{
protected:
    bool watch()
    {
        return m_bus.watch([this](UsbEvent event) { m_events.push_back(event); });
    }

    IokitBus m_bus;
    std::vector<UsbEvent> m_events;
};

TEST_F(PlugNotificationsTest, RegisterAndAreArmedByTheseCalls)
{
    mac.attach({{.vendorId = 1}, {.vendorId = 2}});
    EXPECT_TRUE(watch());
    EXPECT_EQ(mac.calls(),
              oneAfterTheOther(
                  registrationCalls(),
                  Calls{"IOIteratorNext(iterator 1) = service 0", "IOObjectRelease(service 0)",
                        "IOIteratorNext(iterator 1) = service 1", "IOObjectRelease(service 1)",
                        "IOIteratorNext(iterator 1) = none", "IOIteratorNext(iterator 2) = none"}));
    mac.turnRunLoop();
    EXPECT_THAT(m_events, IsEmpty()) << "what was there before is not reported";
    EXPECT_THAT(mac.alive(), ElementsAre("iterator 1", "iterator 2", "port 1", "port 2"));
}

TEST_F(PlugNotificationsTest, ReportEachKindAndEmptyItsListForTheNext)
{
    watch();
    for (const int round : {1, 2}) {
        m_events.clear();
        mac.plug({});
        mac.plug({});
        mac.turnRunLoop();
        EXPECT_THAT(m_events, ElementsAre(UsbEvent::Attached)) << round;
        mac.unplug();
        mac.turnRunLoop();
        EXPECT_THAT(m_events, ElementsAre(UsbEvent::Attached, UsbEvent::Detached)) << round;
        mac.unplug();
        mac.turnRunLoop();
    }
}

TEST_F(PlugNotificationsTest, AddNoSourceThatIsNotThere)
{
    mac.portsWithoutSource = {1};
    EXPECT_TRUE(watch());
    Calls calls = registrationCalls();
    calls[4] = "IONotificationPortGetRunLoopSource(port 1) = none";
    calls.erase(calls.begin() + 7);
    EXPECT_EQ(mac.calls(), oneAfterTheOther(calls, Calls{"IOIteratorNext(iterator 1) = none",
                                                         "IOIteratorNext(iterator 2) = none"}));
    mac.forgetCalls();
    mac.plug({});
    mac.unplug();
    mac.turnRunLoop();
    EXPECT_THAT(m_events, ElementsAre(UsbEvent::Detached))
        << "the other kind is reported all the same";
}

TEST_F(PlugNotificationsTest, OutliveTheRefusalOfTheSecondRegistration)
{
    mac.attach({{}});
    mac.refusedNotifications = {{kIOTerminatedNotification, kIOReturnNoMemory}};
    EXPECT_TRUE(watch());
    mac.plug({});
    mac.unplug(0);
    mac.turnRunLoop();
    EXPECT_THAT(m_events, ElementsAre(UsbEvent::Attached));
    EXPECT_THAT(mac.alive(), ElementsAre("iterator 1", "port 1", "port 2"));
}

TEST_F(PlugNotificationsTest, GiveTheDictionaryBackThatNoPortUsesUp)
{
    mac.refusedPorts = {1};
    EXPECT_TRUE(watch());
    EXPECT_THAT(mac.calls(), testing::Contains("CFRelease(dictionary 1)"));
    EXPECT_THAT(mac.alive(), ElementsAre("iterator 1", "port 2"));
}

TEST_F(PlugNotificationsTest, DoWithoutDictionaries)
{
    mac.givesDictionaries = false;
    mac.refusedPorts = {1};
    EXPECT_FALSE(watch());
    EXPECT_THAT(mac.alive(), ElementsAre("port 2"));
}

TEST_F(PlugNotificationsTest, RegisterOnceAndListenAgain)
{
    watch();
    mac.forgetCalls();
    m_bus.unwatch();
    mac.plug({});
    mac.turnRunLoop();
    EXPECT_THAT(m_events, IsEmpty());
    mac.forgetCalls();
    EXPECT_TRUE(watch());
    EXPECT_THAT(mac.calls(), IsEmpty()) << "the system was asked once and for all";
    mac.plug({});
    mac.turnRunLoop();
    EXPECT_THAT(m_events, ElementsAre(UsbEvent::Attached));
}

TEST_F(PlugNotificationsTest, ReachNobodyAfterTheEndOfTheBus)
{
    {
        IokitBus other;
        other.watch([this](UsbEvent event) { m_events.push_back(event); });
    }
    mac.plug({});
    mac.turnRunLoop();
    EXPECT_THAT(m_events, IsEmpty());
}

} // namespace
} // namespace vornadel::test
