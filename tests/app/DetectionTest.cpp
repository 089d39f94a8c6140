#include "tests/app/ToolUnderTest.h"

#include "hub/HubTransport.h"
#include "standins/sim/DemoImage.h"

#include <gmock/gmock.h>

#include <string>

namespace vornadel::test
{

namespace
{

using testing::EndsWith;
using testing::HasSubstr;

const std::string kFail = "Detect Zel Hub: Fail\nPlease Insert Zel Hub Device";
const std::string kHeld = "Detect Zel Hub : Success\nfwVer:ffff";
const std::string kUnread = "Detect Zel Hub : Success\n-need load driver";
const std::string kDemo100 = "Detect Zel Hub : Success\nfwVer:0100";
const std::string kDemo101 = "Detect Zel Hub : Success\nfwVer:0101";

class Detection : public ToolUnderTest
{
protected:
    void expectShown(const std::string& text, int hue)
    {
        EXPECT_EQ(hubInfo(), text);
        EXPECT_EQ(hueOf(*tool().nstfHubInfo_UpdateFW), hue);
    }

    /// The console lines from `change` and from the events that follow.
    std::string consoleOf(const std::function<void()>& change)
    {
        testing::internal::CaptureStderr();
        change();
        settleEvents();
        return testing::internal::GetCapturedStderr();
    }
};

TEST_F(Detection, RunsTwiceAtTheStartAndShowsTheVersionInLowerCase)
{
    hubOptions.initialFlash = demoImage(0xABCD);
    EXPECT_THAT(consoleOfLaunch(), EndsWith("Enter Device Added\nEnter Device Removed\n"));
    EXPECT_EQ(hub().requestCount(), 4U) << "open-time request and status, twice";
    expectShown("Detect Zel Hub : Success\nfwVer:abcd", kBlueHue);
    EXPECT_FALSE(Hub_IsOpen());
}

TEST_F(Detection, AsksForTheDriverWhenTheStatusCannotBeRead)
{
    hubOptions.faults = {{.kind = FaultKind::Stall, .on = RequestKind::Status, .position = 1},
                         {.kind = FaultKind::Stall, .on = RequestKind::Status, .position = 2}};
    launch();
    EXPECT_EQ(hub().faultsTriggered(), 2U);
    expectShown(kUnread, kBlueHue);
    EXPECT_FALSE(Hub_IsOpen());
}

TEST_F(Detection, RunsAgainForADeviceThatIsNoHub)
{
    launchAndSettle();
    const unsigned before = hub().requestCount();
    EXPECT_EQ(consoleOf([this] { strangerComesOrGoes(UsbEvent::Attached); }),
              "Enter Device Added\n");
    EXPECT_EQ(hub().requestCount(), before + 2);
    EXPECT_EQ(consoleOf([this] { strangerComesOrGoes(UsbEvent::Detached); }),
              "Enter Device Removed\n");
    EXPECT_EQ(hub().requestCount(), before + 4);
    expectShown(kDemo100, kBlueHue);
}

TEST_F(Detection, FollowsTheHubOffTheBusAndBack)
{
    launchAndSettle();
    EXPECT_THAT(consoleOf([this] { hub().unplug(); }), HasSubstr("Enter Device Removed\n"));
    expectShown(kFail, kRedHue);
    hub().setFlash(demoImage(kDemoVersion101));
    EXPECT_THAT(consoleOf([this] { hub().replug(); }), HasSubstr("Enter Device Added\n"));
    expectShown(kDemo101, kBlueHue);
}

TEST_F(Detection, ShowsADepartureInMidFlowAtOnce)
{
    launchAndHold();
    hub().unplug();
    EXPECT_TRUE(waitFor([this] { return hubInfo() == kFail; }));
    EXPECT_TRUE(eraseGate.isReached()) << "the flow still stands where it stood";
    expectShown(kFail, kRedHue);
    eraseGate.open();
    EXPECT_TRUE(waitUntilEnabled());
    EXPECT_THAT(progressText(), EndsWith("Fail to Erase Flash\nUpdate FW Fail\n"));
}

TEST_F(Detection, NeverTakesTheHubFromAFlow)
{
    launchAndHold();
    for (int i = 0; i < 3; ++i) {
        strangerComesOrGoes(UsbEvent::Attached);
        settleEvents();
        expectShown(kHeld, kBlueHue);
        EXPECT_TRUE(Hub_IsOpen());
        strangerComesOrGoes(UsbEvent::Detached);
        settleEvents();
        expectShown(kHeld, kBlueHue);
        EXPECT_TRUE(Hub_IsOpen());
    }
    eraseGate.open();
    EXPECT_TRUE(waitUntilEnabled());
    EXPECT_THAT(progressText(), EndsWith("Update FW Success\n"));
    EXPECT_EQ(hub().flash(), demoImage(kDemoVersion101));
    settleEvents();
    expectShown(kDemo101, kBlueHue);
}

TEST_F(Detection, RunsOnceForAllThatComesAndOnceForAllThatGoes)
{
    launchAndSettle();
    tool().nstfHubInfo_UpdateFW->selectAll();
    const unsigned before = hub().requestCount();
    for (int i = 0; i < 1000; ++i) {
        strangerComesOrGoes(UsbEvent::Attached);
        strangerComesOrGoes(UsbEvent::Detached);
    }
    settleEvents();
    EXPECT_EQ(hub().requestCount(), before + 4);
    EXPECT_TRUE(tool().nstfHubInfo_UpdateFW->textCursor().hasSelection())
        << "the same text is left alone";
}

TEST(DetectionPace, RestsForAsLongAsTheDetectionTookUpToALimit)
{
    VirtualClock clock;
    std::string order;
    const auto detection = [&](char name) {
        return [&order, &clock, name] {
            order += name;
            clock.advance(std::chrono::hours(1));
        };
    };
    DetectionPace slow(clock);
    slow.restAtMost(std::chrono::hours(1));
    slow.run(detection('a'));
    slow.run(detection('b'));
    settleEvents();
    EXPECT_EQ(order, "a");
    DetectionPace limited(clock);
    limited.restAtMost(std::chrono::milliseconds(1));
    limited.run(detection('c'));
    limited.run(detection('d'));
    limited.run(detection('e'));
    EXPECT_EQ(order, "ac");
    EXPECT_TRUE(waitFor([&] { return order == "acde"; }));
}

TEST_F(Detection, DropsAnEventThatWaitsWhenTheToolEnds)
{
    launchAndSettle();
    EXPECT_EQ(consoleOf([this] {
                  hub().unplug(); // posted, but not handled yet
                  tool().shutDown();
              }),
              "");
    EXPECT_EQ(hubInfo(), kDemo100);
}

} // namespace

} // namespace vornadel::test
