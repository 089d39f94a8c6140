#include "tests/app/ToolUnderTest.h"

#include "hub/HubTransport.h"
#include "standins/sim/DemoImage.h"

#include <QApplication>
#include <QDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <gmock/gmock.h>

#include <string>

namespace vornadel::test
{

namespace
{

const std::string kSteps =
    "Erase Flash...\nWrite Flash...\nRead Flash...\nVerify Flash...\nReset to Flash Code...\n";

class StartUpRun : public ToolUnderTest
{
protected:
    /// An image in the resource directory.
    std::string bringImage(const std::string& name)
    {
        return writeFile("Vornadel.app/Contents/Resources/" + name, demoImage(kDemoVersion101));
    }

    void update()
    {
        QTest::mouseClick(tool().nsbtnUpdate_Scalar, Qt::LeftButton);
        EXPECT_TRUE(allSwitched(false)) << "at once";
        EXPECT_TRUE(waitUntilEnabled());
        settleEvents();
    }
};

TEST_F(StartUpRun, WritesTheConfiguredImageInBothModes)
{
    for (const char* mode : {"ScalarMode = 0\n", "ScalarMode = 1\n"}) {
        bringImage("demo.bin");
        config = configText(mode + std::string("FwBin = demo.bin\n"));
        launch();
        EXPECT_TRUE(allSwitched(false)) << "before the update's thread asks for it";
        ASSERT_TRUE(waitUntilEnabled());
        settleEvents();
        EXPECT_EQ(progressText(), "FW:demo.bin(size=32768)\n\n" + kSteps + "Update FW Success\n")
            << mode;
        EXPECT_EQ(hub().flash(), demoImage(kDemoVersion101));
        EXPECT_EQ(tool().slider->doubleValue(), 100);
        EXPECT_FALSE(Hub_IsOpen());
        EXPECT_EQ(hubInfo(), "Detect Zel Hub : Success\nfwVer:0101");
        end();
    }
}

TEST_F(StartUpRun, FindsAnImageWhoseNameIsNoText)
{
    bringImage("line\xF6.bin");
    config = configText("FwBin = line\xF6.bin\n");
    launchAndSettle();
    EXPECT_THAT(progressText(), testing::EndsWith("Update FW Success\n"));
    EXPECT_EQ(hub().flash(), demoImage(kDemoVersion101));
}

TEST_F(StartUpRun, EndsTheProcessFiveSecondsAfterItsSuccess)
{
    bringImage("demo.bin");
    config = configText("FwBin = demo.bin\n");
    heldPause = std::chrono::seconds(5);
    launch();
    ASSERT_TRUE(waitFor([this] { return clock().gate.isReached(); }));
    EXPECT_THAT(progressText(), testing::EndsWith("Update FW Success\n"));
    EXPECT_TRUE(allSwitched(true));
    EXPECT_FALSE(Hub_IsOpen());
    EXPECT_EQ(ends, 0);
    clock().gate.open();
    EXPECT_TRUE(waitFor([this] { return ends == 1; }));
    EXPECT_EQ(clock().pauses().back(), std::chrono::seconds(5));
}

TEST_F(StartUpRun, LeavesTheEndToTheWindowThatClosesMeanwhile)
{
    bringImage("demo.bin");
    config = configText("FwBin = demo.bin\n");
    heldPause = std::chrono::seconds(5);
    launch();
    ASSERT_TRUE(waitFor([this] { return clock().gate.isReached(); }));
    end();
    EXPECT_EQ(ends, 0);
}

TEST_F(StartUpRun, EndsTheProcessAfterASuccessByHandToo)
{
    config = configText("ScalarMode = 1\n");
    launchAndSettle();
    EXPECT_EQ(ends, 0) << "the run at start had no image";
    chooseByTyping(tool().nsbtnSelect_Scalar,
                   QString::fromStdString(writeFile("demo.bin", demoImage(kDemoVersion101))));
    update();
    EXPECT_TRUE(waitFor([this] { return ends == 1; }));
}

TEST_F(StartUpRun, FailsWithoutAnImage)
{
    launchAndSettle();
    EXPECT_EQ(progressText(), "FW:(size=0)\n\nWrong firmware file\nUpdate FW Fail\n");
    EXPECT_EQ(hueOf(*tool().nstfUpdateInfo_UpdateFW), kRedHue);
    EXPECT_TRUE(tool().window()->isVisible());
    end();
    EXPECT_EQ(ends, 0);
}

TEST_F(StartUpRun, CanBeRepeatedByHandWithTheSameImage)
{
    bringImage("demo.bin");
    config = configText("ScalarMode = 1\nFwBin = demo.bin\n");
    hubOptions.faults = {{.kind = FaultKind::Flip, .on = RequestKind::Read, .position = 1}};
    launchAndSettle();
    EXPECT_THAT(progressText(), testing::EndsWith("Fail to verify flash\nUpdate FW Fail\n"));
    update();
    EXPECT_EQ(progressText(), "FW:demo.bin(size=32768)\n\n" + kSteps + "Update FW Success\n");
    EXPECT_EQ(hub().flash(), demoImage(kDemoVersion101));
}

TEST_F(StartUpRun, TakesTheConfiguredImageBeforeAChosenOneAndNamesIt)
{
    bringImage("demo.bin");
    config = configText("ScalarMode = 1\nFwBin = demo.bin\n");
    launchAndSettle();
    ASSERT_TRUE(hub().setFlash(demoImage()));
    const std::string chosen = writeFile("other.bin", demoImage());
    chooseByTyping(tool().nsbtnSelect_Scalar, QString::fromStdString(chosen));
    EXPECT_EQ(tool().nstextfd_Scalar->text().toStdString(), chosen);
    EXPECT_EQ(tool().nstextfd_Scalar->toolTip().toStdString(),
              chosen + "\n\"ScalarUpdate\" writes the image that config.ini names, if it can be "
                       "read: demo.bin");
    update();
    EXPECT_EQ(hub().flash(), demoImage(kDemoVersion101));
    EXPECT_EQ(tool().nstextfd_Scalar->text(), "demo.bin");
    EXPECT_EQ(tool().nstextfd_Scalar->toolTip(), "demo.bin");
    EXPECT_EQ(progressText(), "FW:demo.bin(size=32768)\n\n" + kSteps + "Update FW Success\n");
}

TEST_F(StartUpRun, KeepsTheChosenImageWhenTheConfiguredOneIsMissingOrThePanelIsCancelled)
{
    config = configText("ScalarMode = 1\nFwBin = missing.bin\n");
    launchAndSettle();
    EXPECT_EQ(tool().nstextfd_Scalar->text(), "missing.bin");
    const std::string path = writeFile("chosen.bin", demoImage(kDemoVersion101));
    chooseByTyping(tool().nsbtnSelect_Scalar, QString::fromStdString(path));
    clickAndUse(tool().nsbtnSelect_Scalar,
                [](QDialog& panel) { QTest::keyClick(&panel, Qt::Key_Escape); });
    EXPECT_EQ(tool().nstextfd_Scalar->text().toStdString(), path);
    update();
    EXPECT_EQ(progressText(), "FW:" + path + "(size=32768)\n\n" + kSteps + "Update FW Success\n");
    EXPECT_EQ(hub().flash(), demoImage(kDemoVersion101));
}

TEST_F(StartUpRun, SaysNothingWhenAFileIsChosenThatIsNoImage)
{
    config = configText("ScalarMode = 1\n");
    launchAndSettle();
    const std::string path = writeFile("bad.bin", std::vector<std::uint8_t>(1000, 0x11));
    chooseByTyping(tool().nsbtnSelect_Scalar, QString::fromStdString(path));
    settleEvents();
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
    EXPECT_EQ(tool().nstextfd_Scalar->text().toStdString(), path);
    update();
    EXPECT_EQ(progressText(),
              "FW:" + path + "(size=1000)\n\nWrong firmware file\nUpdate FW Fail\n");
}

TEST_F(StartUpRun, HasAnImageOfItsOwn)
{
    config = configText("FwBin = missing.bin\n");
    launchAndSettle();
    chooseByTyping(tool().btnSelect_EasyUpdate,
                   QString::fromStdString(writeFile("demo.bin", demoImage(kDemoVersion101))));
    tool().MP_UpdateScalar();
    EXPECT_TRUE(waitUntilEnabled());
    EXPECT_EQ(progressText(), "FW:missing.bin(size=0)\n\nWrong firmware file\nUpdate FW Fail\n");
}

} // namespace

} // namespace vornadel::test
