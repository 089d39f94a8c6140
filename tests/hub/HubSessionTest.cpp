#include "hub/HubSession.h"

#include "hub/HubCommands.h"
#include "hub/HubFailure.h"
#include "hub/HubTransport.h"
#include "tests/hub/HubTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

namespace vornadel::test
{

namespace
{

using namespace std::chrono_literals;
using testing::Contains;
using testing::IsEmpty;
using testing::Not;

/// The SuperSpeed half of a hub at port 2-N/1-N.
ScriptedDevice hubAt(unsigned port, std::uint64_t incarnation = 1, const std::string& serial = "")
{
    const std::string number = std::to_string(port);
    return {.vendorId = kVendor,
            .productId = kSuperSpeed,
            .place = {{"2-" + number, incarnation}, {"1-" + number, 0}},
            .texts = {.product = {}, .serialNumber = serial}};
}

HubSession::Options strictly(const UsbPlace& place = {})
{
    return {.place = place, .strict = true};
}

class OneHub : public HubTest
{
protected:
    /// Opens, and closes for a restart. The position on the bus of the device that was open, or -1.
    int opens()
    {
        m_bus.forget();
        if (!Hub_OpenDevice()) {
            return -1;
        }
        Hub_BeginRestart();
        Hub_CloseDevice();
        const std::vector<std::string> events = m_bus.events();
        for (const std::string& event : events) {
            if (event.starts_with("open ")) {
                return std::stoi(event.substr(5));
            }
        }
        return -1;
    }
};

} // namespace

TEST_F(OneHub, IsTheFirstOneOrTheChosenOne)
{
    m_bus.attached = {hubAt(1), hubAt(2)};
    EXPECT_EQ(HubSession().place(), UsbPlace());
    {
        const HubSession session;
        EXPECT_EQ(opens(), 0);
        EXPECT_EQ(session.place(), hubAt(1).place);
    }
    const HubSession session(strictly(hubAt(2).place));
    EXPECT_EQ(opens(), 1);
}

TEST_F(OneHub, IsLookedForAtItsPlaceFirstAndElsewhereOnlyIfItHasJustCome)
{
    m_bus.attached = {hubAt(1), hubAt(2)};
    const HubSession session;
    EXPECT_EQ(opens(), 0);
    m_bus.attached = {hubAt(2), hubAt(1)};
    EXPECT_EQ(opens(), 1) << "the same stay will do for the window";
    m_bus.attached = {hubAt(2)};
    EXPECT_EQ(opens(), -1);
    EXPECT_EQ(Hub_LastFailure(), HubFailure::NotReturned);
    m_bus.attached = {hubAt(2), hubAt(3)};
    EXPECT_EQ(opens(), 1);
    EXPECT_EQ(session.place(), hubAt(3).place);
}

TEST_F(OneHub, IsNotOneThatHadAnotherPlaceByItsSerialNumber)
{
    m_bus.attached = {hubAt(1, 1, "A"), hubAt(2, 1, "B")};
    const HubSession session;
    EXPECT_EQ(opens(), 0);
    for (const unsigned port : {1U, 3U}) {
        m_bus.attached = {hubAt(port, 2, "B")};
        EXPECT_EQ(opens(), -1) << port;
    }
    m_bus.attached = {hubAt(1, 2, "C")};
    EXPECT_EQ(opens(), 0);
    m_bus.attached = {hubAt(3, 2, "A")};
    EXPECT_EQ(opens(), 0) << "it had this number itself";
}

TEST_F(OneHub, HasNotReturnedOnlyIfItLeftForARestart)
{
    for (const bool strict : {false, true}) {
        const HubSession session({.place = hubAt(1).place, .strict = strict});
        m_bus.attached = {hubAt(2)};
        EXPECT_EQ(opens(), -1);
        EXPECT_EQ(Hub_LastFailure(), HubFailure::NoHub);
        m_bus.attached = {hubAt(1)};
        EXPECT_EQ(opens(), 0);
        m_bus.attached = {};
        EXPECT_EQ(opens(), -1);
        EXPECT_EQ(Hub_LastFailure(), HubFailure::NotReturned);
        m_bus.attached = {hubAt(1, 2)};
        open();
        Hub_CloseDevice();
        m_bus.attached = {};
        EXPECT_EQ(opens(), -1);
        EXPECT_EQ(Hub_LastFailure(), HubFailure::NoHub);
    }
}

TEST_F(OneHub, IsStrictlyTheNextStayAtItsPlace)
{
    m_bus.attached = {hubAt(1), hubAt(2)};
    const HubSession session(strictly());
    EXPECT_EQ(opens(), 0);
    EXPECT_EQ(opens(), -1);
    EXPECT_EQ(Hub_LastFailure(), HubFailure::NotRestarted);
    m_bus.attached = {hubAt(2), hubAt(3)};
    EXPECT_EQ(opens(), -1);
    EXPECT_EQ(Hub_LastFailure(), HubFailure::NotReturned);
    m_bus.attached = {hubAt(2), hubAt(1, 2)};
    EXPECT_EQ(opens(), 1);
}

TEST_F(OneHub, MayReturnWithItsOtherHalfFirst)
{
    m_bus.attached = {hubAt(1)};
    const HubSession session(strictly());
    EXPECT_EQ(opens(), 0);
    ScriptedDevice other = hubAt(1);
    other.productId = kHighSpeed;
    other.place = {{"1-1", 7}, {"2-1", 1}};
    m_bus.attached = {other};
    EXPECT_EQ(opens(), -1) << "its first half is still in the stay before";
    m_bus.attached.front().place.other.incarnation = 0;
    EXPECT_EQ(opens(), 0);
}

TEST_F(OneHub, StrictlyHasItsSerialNumberOrTheOneOfItsNewFirmware)
{
    m_bus.attached = {hubAt(1, 1, "A"), hubAt(2)};
    HubSession session(strictly());
    EXPECT_EQ(opens(), 0);
    m_bus.attached = {hubAt(1, 2)};
    EXPECT_EQ(opens(), 0) << "its ROM code may not know the number";
    m_bus.attached = {hubAt(1, 3, "B")};
    EXPECT_EQ(opens(), -1);
    EXPECT_EQ(Hub_LastFailure(), HubFailure::AnotherHub);
    EXPECT_THAT(m_bus.events(), Not(Contains("open 0")));
    session.expectSerialNumber("B");
    m_bus.attached = {hubAt(1, 4)};
    EXPECT_EQ(opens(), 0);
    m_bus.attached = {hubAt(1, 5, "B")};
    EXPECT_EQ(opens(), 0);
    m_bus.attached = {hubAt(1, 6, "C")};
    EXPECT_EQ(opens(), -1);
    session.expectAnySerialNumber();
    EXPECT_EQ(opens(), 0);
}

TEST_F(OneHub, LeavesAnErrorOfTheDevicesBehindItUntold)
{
    const ScriptedDevice withoutPlugIn = {.step = UsbSearch::Step::NoPlugIn};
    m_bus.attached = {hubAt(1), withoutPlugIn, hubAt(2)};
    const HubSession session;
    EXPECT_EQ(opens(), 0);
    EXPECT_EQ(LastError, 0);
    m_bus.attached = {withoutPlugIn, hubAt(1)};
    EXPECT_EQ(opens(), 1);
    EXPECT_EQ(LastError, 3);
}

TEST_F(OneHub, IsLookedForOnceASecondAndMoreOftenIfItRefuses)
{
    const struct {
        bool areEventsReported;
        bool isThere;
        UsbOpenStatus status;
        std::chrono::milliseconds found;
    } rows[] = {{true, false, UsbOpenStatus::Opened, 3000ms},
                {true, true, UsbOpenStatus::Gone, 3000ms},
                {false, false, UsbOpenStatus::Opened, 2550ms},
                {true, true, UsbOpenStatus::NoAccess, 2550ms},
                {true, true, UsbOpenStatus::Busy, 2550ms},
                {true, true, UsbOpenStatus::Other, 2550ms}};
    for (const auto& row : rows) {
        HubSession session(strictly(hubAt(1).place));
        int words = 0;
        session.onWaiting = [&](Clock::Duration) { ++words; };
        m_bus.saysItWatches = row.areEventsReported;
        m_bus.attached = {hubAt(row.isThere ? 1 : 2)};
        m_bus.attached.front().openStatus = row.status;
        const Clock::Duration begin = m_clock.now();
        m_clock.after(2520ms, [this] { m_bus.attached = {hubAt(1)}; });
        EXPECT_TRUE(Hub_AwaitDevice(20s, true));
        EXPECT_EQ(m_clock.now() - begin, row.found) << (&row - rows);
        EXPECT_EQ(words, 2) << "one a second";
        Hub_CloseDevice();
    }
}

TEST_F(OneHub, IsAtItsPlaceAtFirstWhateverHubWithItsSerialNumberLeaves)
{
    m_bus.attached = {hubAt(1, 1, "A"), hubAt(2, 1, "A")};
    m_bus.attached[0].openStatus = UsbOpenStatus::Busy;
    const HubSession session(strictly(hubAt(1).place));
    EXPECT_EQ(opens(), -1);
    m_bus.attached = {hubAt(1, 1, "A")};
    EXPECT_EQ(opens(), 0);
}

TEST_F(OneHub, IsWaitedForASecondOnlyIfAnotherProgramHasIt)
{
    m_bus.attached.front().openStatus = UsbOpenStatus::NoAccess;
    const HubSession session(strictly());
    EXPECT_FALSE(Hub_OpenRomDevice());
    EXPECT_EQ(Hub_LastFailure(), HubFailure::NoAccess);
    EXPECT_THAT(m_clock.pauses(), IsEmpty());
    m_bus.attached.front().openStatus = UsbOpenStatus::Busy;
    EXPECT_FALSE(Hub_OpenRomDevice());
    EXPECT_EQ(Hub_LastFailure(), HubFailure::Busy);
    EXPECT_EQ(m_clock.now(), 1s);
    EXPECT_FALSE(Hub_AwaitDevice(70ms, false));
    EXPECT_EQ(m_clock.now(), 1070ms);
}

TEST_F(OneHub, RestartsOnlyIfItIsOpen)
{
    const HubSession session;
    Hub_BeginRestart();
    EXPECT_FALSE(session.hasRestarted());
}

TEST_F(OneHub, StaysWithTheLaterOfTwoSessions)
{
    HubSession before;
    before.end();
    const HubSession session;
    before.end();
    EXPECT_EQ(HubSession::ofThisThread(), &session);
}

TEST_F(OneHub, IsLockedUntilTheEndOfTheSession)
{
    m_bus.attached = {hubAt(1)};
    PlaceOwner owner;
    {
        const HubSession session;
        EXPECT_EQ(opens(), 0);
        EXPECT_EQ(m_bus.placeLocks().lock(hubAt(1).place, {}, owner), nullptr);
        EXPECT_EQ(m_bus.placeLocks().owners().front().ids, (UsbIds{kVendor, kSuperSpeed}));
    }
    const auto lock = m_bus.placeLocks().lock(hubAt(1).place, {}, owner);
    EXPECT_NE(lock, nullptr);
    for (const bool strict : {false, true}) {
        const HubSession session({.strict = strict});
        EXPECT_EQ(opens(), -1);
        EXPECT_TRUE(session.isTaken());
        EXPECT_EQ(session.owner().place, "2-1/1-1");
        EXPECT_EQ(Hub_LastFailure(), HubFailure::Busy);
        EXPECT_THAT(m_bus.events(), Not(Contains("open 0")));
    }
    const HubSession session({.locks = false});
    EXPECT_EQ(opens(), 0);
}

TEST_F(OneHub, IsTheFirstOneAsBeforeWhereThePlatformTellsNoPlaces)
{
    m_bus.attached = {{kVendor, kSuperSpeed}, {kVendor, kSuperSpeed}};
    const HubSession session;
    EXPECT_EQ(opens(), 0);
    EXPECT_EQ(opens(), 0);
    m_bus.attached = {};
    EXPECT_EQ(opens(), -1);
    EXPECT_EQ(Hub_LastFailure(), HubFailure::NoHub);
}

} // namespace vornadel::test
