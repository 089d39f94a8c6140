// Notifications of devices that come and go, call for call.

#include "tests/macos/MacTest.h"

#include <memory>
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

    /// Takes a list to its end; the result is how many were in it.
    int take(UsbEvent kind)
    {
        int taken = 0;
        while (m_bus.services(kind).next()) {
            ++taken;
        }
        return taken;
    }

    void arm()
    {
        take(UsbEvent::Attached);
        take(UsbEvent::Detached);
        mac.forgetCalls();
    }

    IokitBus m_bus;
    std::vector<UsbEvent> m_events;
};

TEST_F(PlugNotificationsTest, RegisterByTheseCalls)
{
    EXPECT_TRUE(watch());
    EXPECT_EQ(mac.calls(), registrationCalls());
    EXPECT_THAT(mac.alive(), ElementsAre("iterator 1", "iterator 2", "port 1", "port 2"));
}

TEST_F(PlugNotificationsTest, AreArmedByTakingBothLists)
{
    mac.attach({{.vendorId = 1}, {.vendorId = 2}});
    watch();
    mac.forgetCalls();
    EXPECT_EQ(take(UsbEvent::Attached), 2);
    EXPECT_EQ(take(UsbEvent::Detached), 0);
    EXPECT_THAT(mac.calls(),
                ElementsAre("IOIteratorNext(iterator 1) = service 0", "IOObjectRelease(service 0)",
                            "IOIteratorNext(iterator 1) = service 1", "IOObjectRelease(service 1)",
                            "IOIteratorNext(iterator 1) = none",
                            "IOIteratorNext(iterator 2) = none"));
    mac.turnRunLoop();
    EXPECT_THAT(m_events, IsEmpty()) << "what was there before is not reported";
    EXPECT_THAT(mac.alive(), ElementsAre("iterator 1", "iterator 2", "port 1", "port 2"));
}

TEST_F(PlugNotificationsTest, ReportEachKindAndLeaveItsListToTheListener)
{
    watch();
    arm();
    mac.plug({});
    mac.plug({});
    mac.turnRunLoop();
    EXPECT_THAT(m_events, ElementsAre(UsbEvent::Attached));
    EXPECT_THAT(mac.calls(), IsEmpty()) << "nothing is taken before its turn";
    EXPECT_EQ(take(UsbEvent::Attached), 2);
    mac.unplug();
    mac.turnRunLoop();
    EXPECT_THAT(m_events, ElementsAre(UsbEvent::Attached, UsbEvent::Detached));
    EXPECT_EQ(take(UsbEvent::Detached), 1);
}

TEST_F(PlugNotificationsTest, LoseNoDeviceThatComesWhileTheLastOneIsStillListed)
{
    watch();
    arm();
    mac.plug({});
    mac.turnRunLoop();
    mac.plug({}); // joins the list
    mac.turnRunLoop();
    EXPECT_THAT(m_events, ElementsAre(UsbEvent::Attached));
    EXPECT_EQ(take(UsbEvent::Attached), 2);
    mac.plug({});
    mac.turnRunLoop();
    EXPECT_THAT(m_events, ElementsAre(UsbEvent::Attached, UsbEvent::Attached));
}

TEST_F(PlugNotificationsTest, AddNoSourceThatIsNotThere)
{
    mac.portsWithoutSource = {1};
    EXPECT_TRUE(watch());
    Calls calls = registrationCalls();
    calls[4] = "IONotificationPortGetRunLoopSource(port 1) = none";
    calls.erase(calls.begin() + 7);
    EXPECT_EQ(mac.calls(), calls);
    arm();
    mac.plug({});
    mac.unplug();
    mac.turnRunLoop();
    EXPECT_THAT(m_events, ElementsAre(UsbEvent::Detached))
        << "the other kind is reported all the same";
}

TEST_F(PlugNotificationsTest, AddNoSourceAtAllWhenThereIsNone)
{
    mac.portsWithoutSource = {1, 2};
    EXPECT_FALSE(watch()) << "nobody would be told";
    EXPECT_THAT(mac.calls(),
                testing::Not(testing::Contains(testing::StartsWith("CFRunLoopAddSource("))));
    EXPECT_EQ(take(UsbEvent::Attached), 0);
    EXPECT_EQ(take(UsbEvent::Detached), 0);
}

TEST_F(PlugNotificationsTest, OutliveTheRefusalOfTheSecondRegistration)
{
    mac.attach({{}});
    mac.refusedNotifications = {{kIOTerminatedNotification, kIOReturnNoMemory}};
    EXPECT_TRUE(watch());
    Calls calls = registrationCalls();
    calls.back() = calls.back().substr(0, calls.back().find(" = ")) + " = 0xE00002BD";
    EXPECT_EQ(mac.calls(), calls);
    EXPECT_EQ(take(UsbEvent::Attached), 1);
    EXPECT_EQ(take(UsbEvent::Detached), 0);
    mac.plug({});
    mac.unplug(0);
    mac.turnRunLoop();
    EXPECT_THAT(m_events, ElementsAre(UsbEvent::Attached));
    EXPECT_THAT(mac.alive(), ElementsAre("iterator 1", "port 1", "port 2"));
}

TEST_F(PlugNotificationsTest, AreNoneWhenEachKindLacksSomething)
{
    mac.portsWithoutSource = {1};
    mac.refusedNotifications = {{kIOTerminatedNotification, kIOReturnError}};
    EXPECT_FALSE(watch());
    EXPECT_EQ(take(UsbEvent::Attached), 0);
    EXPECT_EQ(take(UsbEvent::Detached), 0);
}

TEST_F(PlugNotificationsTest, OutliveTheRefusalOfBothRegistrations)
{
    mac.refusedNotifications = {{kIOFirstMatchNotification, kIOReturnError},
                                {kIOTerminatedNotification, kIOReturnError}};
    EXPECT_FALSE(watch());
    EXPECT_EQ(take(UsbEvent::Attached), 0);
    EXPECT_EQ(take(UsbEvent::Detached), 0);
    EXPECT_THAT(mac.alive(), ElementsAre("port 1", "port 2"));
}

TEST_F(PlugNotificationsTest, GiveTheDictionaryBackThatNoPortUsesUp)
{
    mac.refusedPorts = {1};
    EXPECT_TRUE(watch());
    EXPECT_THAT(mac.calls(), testing::Contains("CFRelease(dictionary 1)"));
    EXPECT_THAT(mac.alive(), ElementsAre("iterator 1", "port 2"));
    EXPECT_EQ(take(UsbEvent::Attached), 0);
}

TEST_F(PlugNotificationsTest, DoWithoutDictionaries)
{
    mac.givesDictionaries = false;
    mac.refusedPorts = {1};
    EXPECT_FALSE(watch());
    EXPECT_EQ(take(UsbEvent::Attached), 0);
    EXPECT_EQ(take(UsbEvent::Detached), 0);
    EXPECT_THAT(mac.alive(), ElementsAre("port 2"));
}

TEST_F(PlugNotificationsTest, RegisterOnceAndListenAgain)
{
    watch();
    arm();
    m_bus.unwatch();
    mac.plug({});
    mac.turnRunLoop();
    EXPECT_THAT(m_events, IsEmpty());
    EXPECT_TRUE(watch());
    EXPECT_THAT(mac.calls(), IsEmpty()) << "the system was asked once and for all";
    EXPECT_EQ(take(UsbEvent::Attached), 1);
    mac.plug({});
    mac.turnRunLoop();
    EXPECT_THAT(m_events, ElementsAre(UsbEvent::Attached));
}

TEST_F(PlugNotificationsTest, ReachNobodyAfterTheEndOfTheBus)
{
    {
        IokitBus other;
        other.watch([this](UsbEvent event) { m_events.push_back(event); });
        while (other.services(UsbEvent::Attached).next()) {
        }
    }
    mac.plug({});
    mac.turnRunLoop();
    EXPECT_THAT(m_events, IsEmpty());
}

TEST_F(PlugNotificationsTest, GoToTheListenerThatCameLast)
{
    watch();
    arm();
    int heard = 0;
    m_bus.watch([&heard](UsbEvent) { ++heard; });
    mac.plug({});
    mac.turnRunLoop();
    EXPECT_EQ(heard, 1);
    EXPECT_THAT(m_events, IsEmpty());
}

TEST_F(PlugNotificationsTest, StayWithTheBusThatWatchedLastWhenAnEarlierOneEnds)
{
    auto earlier = std::make_unique<IokitBus>();
    earlier->watch([](UsbEvent) { ADD_FAILURE() << "the earlier bus was told"; });
    watch();
    arm();
    earlier.reset();
    mac.plug({});
    mac.turnRunLoop();
    EXPECT_THAT(m_events, ElementsAre(UsbEvent::Attached));
}

TEST_F(PlugNotificationsTest, StayWithTheBusThatWatchedLastWhenAnEarlierOneEndsItsWatch)
{
    IokitBus earlier;
    earlier.watch([](UsbEvent) { ADD_FAILURE() << "the earlier bus was told"; });
    watch();
    arm();
    earlier.unwatch();
    mac.plug({});
    mac.turnRunLoop();
    EXPECT_THAT(m_events, ElementsAre(UsbEvent::Attached));
}

TEST_F(PlugNotificationsTest, ComeBackToABusThatWatchesAgain)
{
    watch();
    {
        IokitBus other;
        other.watch([](UsbEvent) {});
    }
    watch();
    arm();
    mac.plug({});
    mac.turnRunLoop();
    EXPECT_THAT(m_events, ElementsAre(UsbEvent::Attached));
}

TEST_F(PlugNotificationsTest, NeedNoWatchToBeUnwatched)
{
    m_bus.unwatch();
    EXPECT_THAT(mac.calls(), IsEmpty());
}

TEST_F(PlugNotificationsTest, HaveNothingToTakeBeforeTheWatch)
{
    EXPECT_EQ(take(UsbEvent::Attached), 0);
    EXPECT_THAT(mac.calls(), IsEmpty());
}

} // namespace
} // namespace vornadel::test
