#include "cli/HubChoices.h"
#include "firmware/FwImage.h"
#include "standins/sim/DemoImage.h"
#include "tests/cli/Session.h"
#include "tests/support/ScriptedBus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <unistd.h>

namespace vornadel::test
{

namespace
{

using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

std::string containerIdIn(const std::vector<std::uint8_t>& flash)
{
    FwImage image;
    EXPECT_TRUE(FwImage_Parse(image, flash.data(), static_cast<std::int32_t>(flash.size())));
    return image.containerIdText.data();
}

unsigned requestsTo(Session& session, std::initializer_list<std::size_t> hubs)
{
    unsigned count = 0;
    for (const std::size_t hub : hubs) {
        count += session.hub(hub).requestCount();
    }
    return count;
}

TEST(Selection, FindsTheOneHubThatEverySelectorFits)
{
    const HubSelector selectors[] = {
        {.path = "sim-2"},
        {.serialNumber = "SN0002"},
        {.containerId = containerIdIn(demoImage(kDemoVersion100, 2))},
        {.path = "sim-2", .serialNumber = "SN0002", .id = UsbIds{0x1209, 0x0001}},
        {.path = "sim-2", .id = UsbIds{0x1209, 0x0002}},
    };
    for (const HubSelector& selector : selectors) {
        Session session("hubs=3,latency=none");
        session.selector = selector;
        EXPECT_EQ(session.update(session.folder.write("new.bin", demoImage(kDemoVersion101))), 0)
            << session.told();
        EXPECT_EQ(session.hub(2).flash(), demoImage(kDemoVersion101));
        EXPECT_EQ(requestsTo(session, {1, 3}), 0U);
    }
}

TEST(Selection, WithoutAMatchShowsWhatIsAttached)
{
    const HubSelector selectors[] = {
        {.path = "sim-3"},
        {.serialNumber = "SN000"},
        {.containerId = "{00112233-4455-6677-8899-aabbccddeeff}"},
        {.id = UsbIds{0x1209, 0x0003}},
        {.id = UsbIds{0x1208, 0x0001}},
        {.id = UsbIds{0x1209, 0x0000}},
        {.path = "sim-1", .serialNumber = "SN0002"},
    };
    Session session("hubs=2,latency=none");
    for (const HubSelector& selector : selectors) {
        session.selector = selector;
        EXPECT_EQ(session.erase(), kExitNoHub);
        EXPECT_EQ(session.told(), "no attached hub matches; these are attached:\n"
                                  "sim-1  1209:0001/0002  SN0001  Demo Hub\n"
                                  "sim-2  1209:0001/0002  SN0002  Demo Hub\n");
        EXPECT_THAT(session.out.str(), IsEmpty());
    }
    EXPECT_EQ(requestsTo(session, {1, 2}), 0U);
}

TEST(Selection, TakesNoneOfSeveral)
{
    Session session("hubs=2,latency=none");
    const std::string image = session.folder.write("new.bin", demoImage(kDemoVersion101));
    const std::string candidates = "sim-1  1209:0001/0002  SN0001  Demo Hub\n"
                                   "sim-2  1209:0001/0002  SN0002  Demo Hub\n";
    session.folder.write("config.ini", session.folder.text("config.ini") +
                                           "[DumpTool Config]\nFwBin = new.bin\n");
    for (const std::string verb : {"update", "scalar", "read", "erase", "info"}) {
        const std::string file = verb == "update" ? image
                                 : verb == "read" ? session.folder.path("read.bin")
                                                  : "";
        EXPECT_EQ(session.run(session.line(verb, file)), kExitSeveralHubs);
        EXPECT_EQ(session.told(), "several supported hubs are attached; choose one, for example "
                                  "with --path:\n" +
                                      candidates);
    }
    session.selector = {.id = UsbIds{0x1209, 0x0002}};
    EXPECT_EQ(session.erase(), kExitSeveralHubs);
    EXPECT_THAT(session.told(), StartsWith("several attached hubs match; "));
    EXPECT_EQ(requestsTo(session, {1, 2}), 0U);
}

TEST(Selection, CountsAHubThatAnotherFlowHasEvenWhileItIsAway)
{
    Session session("hubs=2,latency=none");
    const std::string pid = std::to_string(::getpid());
    const auto busy = session.occupy("sim-1");
    EXPECT_EQ(session.erase(), kExitSeveralHubs);
    EXPECT_THAT(session.told(), HasSubstr("Demo Hub  busy (pid " + pid + ")\nsim-2 "));

    session.hub(1).unplug();
    for (const auto& id : {std::optional<UsbIds>(), std::optional(UsbIds{0x1209, 0x0001})}) {
        session.selector = {.id = id};
        EXPECT_EQ(session.erase(), kExitSeveralHubs);
        EXPECT_THAT(session.told(), HasSubstr("\nsim-1  -               -       -         busy"));
    }
    EXPECT_EQ(requestsTo(session, {1, 2}), 0U);

    for (const HubSelector& selector :
         {HubSelector{.path = "sim-2"}, HubSelector{.serialNumber = "SN0002"},
          HubSelector{.containerId = containerIdIn(demoImage(kDemoVersion100, 2))}}) {
        session.selector = selector;
        EXPECT_EQ(session.info(), kExitSuccess) << session.told();
    }
}

TEST(Selection, CountsAHubThatIsLockedOrReleasedWhileItLooks)
{
    const UsbPlace other{{"2-2", 0}, {"1-2", 0}};
    for (const bool released : {false, true}) {
        Session session;
        ScriptedBus bus;
        bus.attached = {{.vendorId = 0x1209, .productId = 1, .place = {{"2-1", 5}, {"1-1", 6}}}};
        PlaceOwner owner;
        std::unique_ptr<PlaceLock> lock =
            released ? bus.placeLocks().lock(other, {}, owner) : nullptr;
        bus.onSearch([&] { lock = released ? nullptr : bus.placeLocks().lock(other, {}, owner); });
        EXPECT_EQ(session.runOn(bus, session.line("erase")), kExitSeveralHubs);
        EXPECT_THAT(session.told(), EndsWith("\n2-1/1-1  1209:0001/-  -  -\n"
                                             "2-2/1-2  -            -  -  busy\n"));
        bus.forgetHooks();
    }
}

TEST(Selection, CountsNoHubInARestartThatAnotherConfigurationSupports)
{
    Session session;
    ScriptedBus bus;
    bus.attached = {{.vendorId = 0x1209, .productId = 1, .place = {{"2-1", 5}, {"1-1", 6}}}};
    const UsbPlace other{{"2-2", 0}, {"1-2", 0}};
    for (const auto& [ids, status] :
         {std::pair(UsbIds{0x1209, 3}, kExitSuccess), {{0x1209, 1}, kExitSeveralHubs}}) {
        PlaceOwner owner;
        const auto lock = bus.placeLocks().lock(other, ids, owner);
        EXPECT_EQ(session.runOn(bus, session.line("info")), status) << ids.product;
    }
}

TEST(Selection, TakesAHubThatIsReleasedWhileItLooks)
{
    Session session;
    ScriptedBus bus;
    const UsbPlace place{{"2-1", 5}, {"1-1", 6}};
    bus.attached = {{.vendorId = 0x1209, .productId = 1, .place = place}};
    PlaceOwner owner;
    std::unique_ptr<PlaceLock> lock = bus.placeLocks().lock(place, {}, owner);
    bus.onSearch([&] { lock = nullptr; });
    EXPECT_EQ(session.runOn(bus, session.line("info")), kExitSuccess) << session.told();
    bus.forgetHooks();
}

TEST(Selection, KnowsAHubByEitherPort)
{
    Session session;
    ScriptedBus bus;
    const UsbPlace away{{"2-2", 0}, {"1-2", 0}};
    bus.attached = {{.vendorId = 0x1209, .productId = 1, .place = {{"2-1", 5}, {"1-1", 6}}}};
    PlaceOwner owner;
    const auto lock = bus.placeLocks().lock(away, {}, owner);
    for (const auto& [path, status] :
         {std::pair("2-1", 0), std::pair("1-1", 0), std::pair("2-1/1-1", 0), std::pair("2-2", 11),
          std::pair("1-2", 11), std::pair("2-2/1-2", 11), std::pair("1-2/2-2", 3),
          std::pair("2-3", 3)}) {
        CommandLine line = session.line("info");
        line.hub.path = path;
        EXPECT_EQ(session.runOn(bus, line), status) << path << ": " << session.told();
    }
}

TEST(Selection, KnowsAHubByEitherHalfWhereTheSystemTellsOnePortEach)
{
    Session session;
    ScriptedBus bus;
    bus.attached = {{.vendorId = 0x1209, .productId = 1, .place = {{"21-3", 5}, {}}},
                    {.vendorId = 0x1209, .productId = 2, .place = {{"20-3", 6}, {}}}};
    CommandLine line = session.line("info");
    line.hub.path = "20-3";
    EXPECT_EQ(session.runOn(bus, line), kExitSuccess) << session.told();
    UsbPlace locked;
    locked.own.path = "20-3";
    PlaceOwner owner;
    const auto lock = bus.placeLocks().lock(locked, {}, owner);
    EXPECT_EQ(session.runOn(bus, line), kExitBusy);
}

TEST(Selection, KnowsTheOwnerOfAPlace)
{
    Session session("hubs=2");
    const auto busy = session.occupy("sim-2");
    UsbPlace place;
    place.own.path = "sim-2";
    EXPECT_EQ(ownerOf(*session.bus, place), ::getpid());
    place.own.path = "sim-1";
    EXPECT_EQ(ownerOf(*session.bus, place), 0);
}

TEST(Selection, SaysWhoTookTheHubAfterTheChoice)
{
    Session session;
    std::unique_ptr<PlaceLock> lock;
    ScriptedBus bus;
    const UsbPlace place{{"2-1", 5}, {"1-1", 6}};
    bus.attached = {{.vendorId = 0x1209, .productId = 1, .place = place}};
    int searches = 0;
    PlaceOwner owner;
    bus.onSearch([&] {
        if (++searches == 2) { // by the flow
            lock = bus.placeLocks().lock(place, {}, owner);
        }
    });
    EXPECT_EQ(session.runOn(bus, session.line("erase")), kExitBusy);
    EXPECT_THAT(
        session.told(),
        EndsWith(
            "\nthe hub is busy: another program has it open, or its place cannot be locked\n"));
    EXPECT_THAT(bus.requests(), IsEmpty());
    bus.forgetHooks();
}

TEST(Selection, RefusesAHubThatAnotherFlowHas)
{
    Session session("hubs=2,latency=none");
    const std::string pid = std::to_string(::getpid());
    const auto busy = session.occupy("sim-2");
    session.selector.path = "sim-2";
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(session.erase(), kExitBusy);
        EXPECT_EQ(session.told(), "sim-2 is busy: process " + pid + " works on it\n");
        EXPECT_EQ(session.info(), kExitBusy);
        session.hub(2).unplug(); // it is away
    }
    EXPECT_EQ(requestsTo(session, {1, 2}), 0U);
}

TEST(Selection, TakesNoneOfSeveralIfTheirPlacesAreNotKnown)
{
    Session session;
    ScriptedBus bus;
    bus.attached = {{.vendorId = 0x1209, .productId = 1, .texts = {"Hub", "1"}},
                    {.vendorId = 0x1209, .productId = 1, .texts = {"Hub", "2"}}};
    CommandLine line = session.line("erase");
    line.hub.serialNumber = "2";
    EXPECT_EQ(session.runOn(bus, line), kExitSeveralHubs);
    EXPECT_EQ(session.told(), "several supported hubs are attached, and the system does not tell "
                              "where; attach only one\n");
    EXPECT_THAT(bus.requests(), IsEmpty());
}

TEST(Selection, AsksNoHubThatAnotherFlowHasForItsContainerId)
{
    Session session("hubs=2,latency=none");
    session.selector.containerId = containerIdIn(demoImage(kDemoVersion100, 2));
    EXPECT_EQ(session.info(), kExitSuccess);
    const auto busy = session.occupy("sim-2");
    EXPECT_EQ(session.info(), kExitNoHub);
}

TEST(Selection, FindsNoHubWithoutADeviceListOrByAnIdThatNoHalfHas)
{
    Session session;
    ScriptedBus bus;
    bus.attached = {{.vendorId = 0x1209, .productId = 1, .place = {{"2-1", 5}, {"1-1", 6}}}};
    CommandLine line = session.line("erase");
    line.hub.id = UsbIds{0x1209, 0x0000}; // the other half is absent
    EXPECT_EQ(session.runOn(bus, line), kExitNoHub);
    bus.givesList = false;
    EXPECT_EQ(session.runOn(bus, line), kExitNoHub);
    EXPECT_EQ(session.told(), "the USB devices cannot be listed\n");
}

TEST(DevicesInUseBelowTheHub, AreNamedBeforeTheFlowOrKeepItFromBeginning)
{
    Session session;
    ScriptedBus bus;
    const std::vector<std::string> below = {"disk sda, mounted at /media/x", "keyboard"};
    bus.attached = {
        {.vendorId = 0x1209,
         .productId = 1,
         .place = {{"2-1", 5}, {"1-1", 6}},
         .below = {below[0]}},
        {.vendorId = 0x1209, .productId = 2, .place = {{"1-1", 6}, {"2-1", 5}}, .below = below}};
    CommandLine line = session.line("erase");
    line.refuseInUse = true;
    EXPECT_EQ(session.runOn(bus, line), kExitFailure);
    EXPECT_EQ(session.told(), "in use: disk sda, mounted at /media/x; keyboard; nothing was sent "
                              "to the hub\n");
    EXPECT_THAT(bus.requests(), IsEmpty());

    line.refuseInUse = false;
    line.dryRun = "offline";
    EXPECT_EQ(session.runOn(bus, line), kExitSuccess);
    EXPECT_THAT(session.told(), EndsWith("; they would be disconnected\n"));
    EXPECT_THAT(bus.requests(), IsEmpty());

    line.dryRun.clear();
    session.runOn(bus, line);
    EXPECT_THAT(session.told(),
                StartsWith("in use: disk sda, mounted at /media/x; keyboard; they will be "
                           "disconnected\n"));
    EXPECT_THAT(bus.requests(), Not(IsEmpty()));

    bus.attached = {bus.attached[0]};
    session.runOn(bus, line);
    EXPECT_THAT(session.told(),
                StartsWith("in use: disk sda, mounted at /media/x; it will be disconnected\n"));
}

} // namespace

} // namespace vornadel::test
