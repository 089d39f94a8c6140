// Each step at which a flow can fail, started by a button of the window: the last lines are the
// right ones to the letter, the buttons are enabled again, the hub is closed, and the next press
// succeeds. The sweep of all faults is below the window, in tests/flows.

#include "tests/app/ToolUnderTest.h"

#include "hub/HubTransport.h"
#include "tests/flows/FlowTable.h"

#include <QPushButton>
#include <QTest>

#include <chrono>
#include <initializer_list>
#include <ostream>

namespace vornadel::test
{

namespace
{

constexpr auto kUpdate = &AppDelegate::btnUpdate_EasyUpdate;
constexpr auto kRead = &AppDelegate::btnRead_FwFlash;
constexpr auto kErase = &AppDelegate::btnErase_FwFlash;

constexpr const char* kNoErase = ",fault=stall@erase#1,fault=stall@erase#2,fault=stall@erase#3";
constexpr const char* kNoReturn = ",fault=never@1";

struct Failure {
    const char* name;
    QPushButton* AppDelegate::*button;
    const Flow& flow;
    Step step;
    std::string faults; ///< none: the hub is unplugged
    double bar;         ///< afterwards, in percent
};

void PrintTo(const Failure& failure, std::ostream* stream) { *stream << failure.name; }

class FailedFlow : public ToolUnderTest, public testing::WithParamInterface<Failure>
{
protected:
    FailedFlow()
    {
        std::string error;
        EXPECT_TRUE(parseSimulatedHubOptions("mode=rom,latency=none" + GetParam().faults,
                                             hubOptions, error))
            << error;
        hubOptions.keepInMemory = true;
    }

    void pressAndExpect(const std::string& lastLines, int hue, double bar)
    {
        QPushButton* const button = tool().*GetParam().button;
        EXPECT_TRUE(button->isEnabled());
        QTest::mouseClick(button, Qt::LeftButton);
        EXPECT_TRUE(waitUntilEnabled());
        settleEvents();
        EXPECT_TRUE(progressText().ends_with(lastLines)) << progressText();
        EXPECT_EQ(hueOf(*tool().nstfUpdateInfo_UpdateFW), hue);
        for (const QWidget* tells :
             std::initializer_list<QWidget*>{tool().nstfUpdateInfo_UpdateFW, tool().slider}) {
            EXPECT_EQ(tells->toolTip().toStdString() + "\n", lastLines);
        }
        // A read's last value comes after the buttons are enabled.
        EXPECT_TRUE(waitFor([this, bar] { return tool().slider->doubleValue() == bar; }))
            << tool().slider->doubleValue();
        EXPECT_TRUE(allSwitched(true));
        EXPECT_FALSE(Hub_IsOpen());
    }
};

} // namespace

TEST_P(FailedFlow, IsShownTrulyAndTheNextPressSucceeds)
{
    const auto& [name, button, flow, step, faults, bar] = GetParam();
    launchAndSettle();
    if (flow.writes()) {
        chooseByTyping(tool().btnSelect_EasyUpdate,
                       QString::fromStdString(writeFile("demo.bin", newFlash())));
    }
    if (faults.empty()) {
        hub().unplug();
        settleEvents();
    }
    pressAndExpect(flow.reasons.at(step) + std::string(flow.failure), kRedHue, bar);

    hub().replug();
    clock().advance(std::chrono::minutes(1));
    settleEvents();
    pressAndExpect(flow.success, kBlueHue, flow.writes() ? 100 : 0);
    EXPECT_TRUE(!flow.writes() || hub().flash() == newFlash());
}

INSTANTIATE_TEST_SUITE_P(
    OfEveryButton, FailedFlow,
    testing::Values(
        Failure{"UpdateNotOpened", kUpdate, easyUpdate(), Step::Open, "", 0},
        Failure{"UpdateNotErased", kUpdate, easyUpdate(), Step::Erase, kNoErase, 0},
        Failure{"UpdateNotWritten", kUpdate, easyUpdate(), Step::Write, ",fault=stall@write#2", 15},
        Failure{"UpdateNotReadBack", kUpdate, easyUpdate(), Step::Read, ",fault=stall@read#2", 55},
        Failure{"UpdateNotEqual", kUpdate, easyUpdate(), Step::Verify, ",fault=flip@write#8", 90},
        Failure{"UpdateNotRestarted", kUpdate, easyUpdate(), Step::Restart, kNoReturn, 100},
        Failure{"ReadNotOpened", kRead, flashRead(), Step::Open, "", 0},
        Failure{"ReadNotDone", kRead, flashRead(), Step::Read, ",fault=stall@read#2", 0},
        Failure{"ReadNotRestarted", kRead, flashRead(), Step::Restart, kNoReturn, 0},
        Failure{"EraseNotOpened", kErase, flashErase(), Step::Open, "", 0},
        Failure{"EraseNotDone", kErase, flashErase(), Step::Erase, kNoErase, 0},
        Failure{"EraseNotRestarted", kErase, flashErase(), Step::Restart, kNoReturn, 0}),
    [](const auto& failure) { return failure.param.name; });

TEST_F(ToolUnderTest, ShowsAHubOnWhichAnotherProgramWorksLikeOneThatCannotBeOpened)
{
    launchAndSettle();
    const unsigned requests = hub().requestCount();
    PlaceOwner owner;
    const auto lock = placeLocks().lock({{"sim-1", 1}, {}}, {}, owner);
    ASSERT_NE(lock, nullptr);
    QTest::mouseClick(tool().btnErase_FwFlash, Qt::LeftButton);
    EXPECT_TRUE(waitUntilEnabled());
    settleEvents();
    EXPECT_EQ(progressText(), "Open Rom Device...\nFail to Open Rom Device\nErase FW Fail\n");
    EXPECT_EQ(hub().requestCount(), requests);
}

} // namespace vornadel::test
