#include "hub/BusEvents.h"
#include "tests/hub/HubTest.h"

#include <array>
#include <chrono>

namespace vornadel::test
{
namespace
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Step = UsbSearch::Step;

const ScriptedDevice kStranger{0x2222, 0x0001};
const ScriptedDevice kNoWayIn{.step = Step::NoPlugIn};
const ScriptedDevice kNoFace{.step = Step::NoInterface};

using FindDevice = HubTest;
using OpenDevice = HubTest;
using CloseDevice = HubTest;
using ControlRequestTest = HubTest;
using Abandon = HubTest;
using UsePlatform = HubTest;

TEST_F(FindDevice, StopsAtTheFirstHubWithoutOpeningIt)
{
    m_bus.attached = {kStranger, {kVendor, kSuperSpeed}, {kVendor, kHighSpeed}};
    EXPECT_TRUE(Hub_FindDevice());
    EXPECT_FALSE(Hub_IsOpen());
    EXPECT_EQ(LastError, 0);
    EXPECT_THAT(m_bus.events(), ElementsAre("search", "drop 0", "drop 1", "end of list"));
}

TEST_F(FindDevice, GoesOnPastDevicesWithoutAccessAndKeepsTheCodeOfTheLast)
{
    const struct {
        std::vector<ScriptedDevice> attached;
        bool found;
        int error;
    } rows[] = {
        {{kStranger}, false, 12},
        {{kNoWayIn, kStranger}, false, 3},
        {{kNoFace, kNoWayIn}, false, 3},
        {{kNoWayIn, kNoFace, {kVendor, kSuperSpeed}}, true, 4},
    };
    for (const auto& row : rows) {
        m_bus.attached = row.attached;
        LastError = 12;
        EXPECT_EQ(Hub_FindDevice(), row.found);
        EXPECT_EQ(LastError, row.error);
    }
}

TEST_F(OpenDevice, OpensTheHubAndSendsTheOpenTimeRequest)
{
    EXPECT_TRUE(Hub_OpenDevice());
    EXPECT_TRUE(Hub_IsOpen());
    EXPECT_EQ(LastError, 0);
    EXPECT_THAT(m_bus.requests(), ElementsAre(kOpenTime));
    EXPECT_THAT(m_bus.events(), ElementsAre("search", "open 0")) << "it keeps the device list";
}

TEST_F(OpenDevice, SendsTheMakersIdThatIsConfigured)
{
    HubMakerVid = 0x2345;
    EXPECT_TRUE(Hub_OpenDevice());
    EXPECT_THAT(m_bus.requests(),
                ElementsAre(SeenRequest{{0x40, 0x02, 0x01, 0x00, 0x45, 0x23, 0x00, 0x00}}));
}

TEST_F(OpenDevice, DoesNotTryTheSecondHubWhenTheFirstRefuses)
{
    m_bus.attached = {{kVendor, kHighSpeed, UsbOpenStatus::Busy}, {kVendor, kSuperSpeed}};
    EXPECT_FALSE(Hub_OpenDevice());
    EXPECT_EQ(LastError, 5);
    EXPECT_FALSE(Hub_IsOpen());
    EXPECT_THAT(m_bus.events(), ElementsAre("search", "open 0", "drop 0"));
    EXPECT_THAT(m_bus.requests(), IsEmpty());
}

TEST_F(OpenDevice, TellsWhyTheHubWasNotOpened)
{
    using Row = std::pair<UsbOpenStatus, HubFailure>;
    for (const auto& [status, failure] : {Row{UsbOpenStatus::NoAccess, HubFailure::NoAccess},
                                          {UsbOpenStatus::Busy, HubFailure::Busy},
                                          {UsbOpenStatus::Gone, HubFailure::Unplugged},
                                          {UsbOpenStatus::Other, HubFailure::NotOpened}}) {
        m_bus.attached = {{kVendor, kSuperSpeed, status}};
        EXPECT_FALSE(Hub_OpenDevice());
        EXPECT_EQ(LastError, 5);
        EXPECT_EQ(Hub_LastFailure(), failure);
    }
    m_bus.attached.clear();
    EXPECT_FALSE(Hub_OpenDevice());
    EXPECT_EQ(Hub_LastFailure(), HubFailure::NoHub);
    m_bus.attached = {{kVendor, kSuperSpeed}};
    EXPECT_TRUE(Hub_OpenDevice());
    onAnotherThread([] {
        EXPECT_FALSE(Hub_OpenDevice());
        EXPECT_EQ(Hub_LastFailure(), HubFailure::Busy);
    });
    EXPECT_EQ(Hub_LastFailure(), HubFailure::NoHub) << "the other thread's is its own";
}

TEST_F(OpenDevice, SetsCodeTwoWithoutADeviceList)
{
    m_bus.givesList = false;
    EXPECT_FALSE(Hub_OpenDevice());
    EXPECT_EQ(LastError, 2);
    EXPECT_EQ(Hub_LastFailure(), HubFailure::NotOpened);
    LastError = 0;
    EXPECT_FALSE(Hub_FindDevice());
    EXPECT_EQ(LastError, 2);
}

TEST_F(OpenDevice, KeepsTheCodeOfADeviceWithoutAccessOnlyIfItFindsAHub)
{
    m_bus.attached = {kNoWayIn, kNoFace, kStranger};
    EXPECT_FALSE(Hub_OpenDevice());
    EXPECT_EQ(LastError, 5);
    m_bus.attached = {kNoWayIn, {kVendor, kSuperSpeed}};
    EXPECT_TRUE(Hub_OpenDevice());
    EXPECT_EQ(LastError, 3);
}

TEST_F(OpenDevice, LeavesTheOverwrittenHubNeitherClosedNorReleased)
{
    open();
    m_bus.attached = {kStranger, {kVendor, kHighSpeed}};
    EXPECT_TRUE(Hub_OpenDevice());
    EXPECT_THAT(m_bus.events(), ElementsAre("search", "drop 0", "open 1"));
    Hub_CloseDevice();
    EXPECT_FALSE(Hub_IsOpen());
    EXPECT_THAT(m_bus.events(), ElementsAre("search", "drop 0", "open 1", "close 1", "drop 1"));
}

TEST_F(OpenDevice, KeepsTheOpenHubWhenASecondOpenFails)
{
    open();
    m_bus.attached.clear();
    EXPECT_FALSE(Hub_OpenDevice());
    EXPECT_TRUE(Hub_IsOpen());
    EXPECT_EQ(Hub_ControlRequest({0x40, 0x55}), 0U);
    onAnotherThread([] { EXPECT_FALSE(Hub_OpenDevice()); });
}

TEST_F(CloseDevice, ClosesAndReleasesOnce)
{
    open();
    Hub_CloseDevice();
    EXPECT_FALSE(Hub_IsOpen());
    Hub_CloseDevice();
    EXPECT_THAT(m_bus.events(), ElementsAre("close 0", "drop 0"));
}

TEST_F(ControlRequestTest, AnswersNotOpenAndSendsNothingWithoutAHub)
{
    EXPECT_EQ(Hub_ControlRequest({0x40, 0xE8}), 0xE00002F0U);
    open();
    Hub_CloseDevice();
    EXPECT_EQ(Hub_ControlRequest({0x40, 0xE8}), 0xE00002F0U);
    EXPECT_THAT(m_bus.requests(), IsEmpty());
    EXPECT_EQ(LastError, 0);
}

TEST_F(ControlRequestTest, PutsAllSixValuesIntoOneTransfer)
{
    open();
    std::array<std::uint8_t, 3> data{0xDE, 0xAD, 0x42};
    EXPECT_EQ(Hub_ControlRequest({0x41, 0x77, 0x1234, 0x5678, data}), 0U);
    EXPECT_THAT(m_bus.requests(),
                ElementsAre(SeenRequest{{0x41, 0x77, 0x34, 0x12, 0x78, 0x56, 0x03, 0x00},
                                        {0xDE, 0xAD, 0x42}}));
}

TEST_F(ControlRequestTest, TellsWhyItFailed)
{
    const std::pair<UsbFailure, HubFailure> failures[] = {
        {UsbFailure::Stalled, HubFailure::Stalled},   {UsbFailure::Short, HubFailure::Short},
        {UsbFailure::Gone, HubFailure::Unplugged},    {UsbFailure::TimedOut, HubFailure::TimedOut},
        {UsbFailure::Other, HubFailure::NotAnswered},
    };
    m_bus.onControl([](ControlRequest&) { return 1U; });
    for (const auto& [failure, meaning] : failures) {
        m_bus.attached = {{.vendorId = kVendor, .productId = kSuperSpeed, .failure = failure}};
        ASSERT_TRUE(Hub_OpenDevice());
        EXPECT_EQ(Hub_ControlRequest({0x40, 0xE8}), 1U);
        EXPECT_EQ(Hub_LastFailure(), meaning);
        Hub_CloseDevice();
    }
}

TEST_F(Abandon, FailsEveryOpenWithoutLookingAtTheBus)
{
    Hub_Abandon();
    EXPECT_TRUE(Hub_IsAbandoned());
    EXPECT_FALSE(Hub_OpenDevice());
    EXPECT_EQ(LastError, 5);
    EXPECT_EQ(Hub_LastFailure(), HubFailure::Abandoned);
    EXPECT_THAT(m_bus.events(), IsEmpty());
}

TEST_F(Abandon, StopsAnOpenThatIsStillLookingForItsHub)
{
    m_bus.onSearch([] { Hub_Abandon(); });
    EXPECT_FALSE(Hub_OpenDevice());
    EXPECT_EQ(LastError, 5);
    EXPECT_EQ(Hub_LastFailure(), HubFailure::Abandoned);
    EXPECT_THAT(m_bus.events(), ElementsAre("search"));
    EXPECT_THAT(m_bus.requests(), IsEmpty());
}

TEST_F(Abandon, LetsATransferInFlightEnd)
{
    open();
    m_bus.onControl([](ControlRequest&) {
        onAnotherThread([] { Hub_Abandon(); });
        return 0U;
    });
    EXPECT_EQ(Hub_ControlRequest({0x40, 0xE8}), 0U);
    EXPECT_EQ(Hub_ControlRequest({0x40, 0xE8}), kHubAbandoned);
    EXPECT_EQ(Hub_LastFailure(), HubFailure::Abandoned);
    EXPECT_EQ(m_bus.requests().size(), 1U);
    Hub_CloseDevice();
    EXPECT_FALSE(Hub_IsOpen());
    EXPECT_THAT(m_bus.events(), ElementsAre("close 0", "drop 0"));
}

TEST_F(UsePlatform, ReplacesBusAndClock)
{
    auto& other = keptForGood<ScriptedBus>();
    auto& otherClock = keptForGood<VirtualClock>();
    other.attached = m_bus.attached;
    Hub_UsePlatform(other, otherClock);
    EXPECT_TRUE(Hub_OpenDevice());
    Hub_Pause(std::chrono::milliseconds(7));
    Hub_CloseDevice();
    EXPECT_THAT(m_bus.events(), IsEmpty());
    EXPECT_THAT(other.events(), ElementsAre("search", "open 0", "close 0", "drop 0"));
    EXPECT_THAT(otherClock.pauses(), ElementsAre(std::chrono::milliseconds(7)));
    Hub_UsePlatform(m_bus, m_clock);
}

TEST_F(UsePlatform, ChangesNothingWhileAHubIsOpen)
{
    open();
    Hub_Abandon();
    Hub_UsePlatform(keptForGood<ScriptedBus>(), keptForGood<VirtualClock>());
    EXPECT_EQ(Hub_ControlRequest({0x40, 0xE8}), kHubAbandoned);
    EXPECT_TRUE(Hub_FindDevice());
    EXPECT_THAT(m_bus.events(), ElementsAre("search", "drop 0", "end of list"));
}

TEST(BusEventsTest, AreCountedAndWakeTheClock)
{
    class : public VirtualClock
    {
    public:
        void wake() override { ++wakes; }
        int wakes = 0;
    } clock;
    ScriptedBus bus;
    {
        const BusEvents events(bus, clock);
        EXPECT_TRUE(bus.report());
        EXPECT_EQ(events.count(), 1U);
        EXPECT_EQ(clock.wakes, 1);
    }
    EXPECT_FALSE(bus.report());
}

} // namespace
} // namespace vornadel::test
