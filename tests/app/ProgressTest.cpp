#include "tests/app/ToolUnderTest.h"

#include <QAccessible>
#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QScrollBar>
#include <QTest>
#include <QWheelEvent>
#include <gmock/gmock.h>

#include <string>

namespace vornadel::test
{

namespace
{

using testing::ElementsAre;

class Progress : public ToolUnderTest
{
protected:
    void SetUp() override
    {
        launchAndSettle();
        tool().resetProgressInfo();
    }
};

TEST_F(Progress, AppendsTheTextAsItStandsWhateverIsSelected)
{
    tool().appendProgressInfo_Blue("one");
    QTest::keyClick(tool().nstfUpdateInfo_UpdateFW, Qt::Key_A, Qt::ControlModifier);
    tool().appendProgressInfo_Blue(" and two\n\n");
    tool().appendProgressInfo_Blue("<b>three</b> & four\n");
    EXPECT_EQ(progressText(), "one and two\n\n<b>three</b> & four\n");
}

TEST_F(Progress, GivesTheWholeTextTheLastColour)
{
    tool().appendProgressInfo_Blue("A\n");
    EXPECT_EQ(hueOf(*tool().nstfUpdateInfo_UpdateFW), kBlueHue);
    tool().appendProgressInfo_Red("B\n");
    EXPECT_EQ(progressText(), "A\nB\n");
    EXPECT_EQ(hueOf(*tool().nstfUpdateInfo_UpdateFW), kRedHue);
    tool().appendProgressInfo_Blue("C\n");
    EXPECT_EQ(progressText(), "A\nB\nC\n");
    EXPECT_EQ(hueOf(*tool().nstfUpdateInfo_UpdateFW), kBlueHue);
}

TEST_F(Progress, DoesNotScrollWhatIsBeingRead)
{
    for (int line = 0; line < 100; ++line) {
        tool().appendProgressInfo_Blue("line\n");
    }
    QScrollBar& bar = *tool().nstfUpdateInfo_UpdateFW->verticalScrollBar();
    settleEvents();
    bar.setValue(7);
    tool().appendProgressInfo_Blue("another\n");
    settleEvents();
    EXPECT_EQ(bar.value(), 7);
}

TEST_F(Progress, KeepsFractionsOfAPercent)
{
    tool().updateProgressBar(12.625);
    EXPECT_EQ(tool().slider->doubleValue(), 12.625);
    EXPECT_EQ(tool().slider->value(), 13);
    tool().updateProgressBar(99.4);
    EXPECT_EQ(tool().slider->doubleValue(), 99.4);
    EXPECT_EQ(tool().slider->value(), 99);
}

TEST_F(Progress, IsMovedByNobodyElse)
{
    tool().updateProgressBar(12.625);
    ProgressSlider& bar = *tool().slider;
    EXPECT_EQ(bar.focusPolicy(), Qt::NoFocus);
    const QPoint end(bar.width() - 5, bar.height() / 2);
    QTest::mouseClick(&bar, Qt::LeftButton, {}, end);
    QTest::mousePress(&bar, Qt::LeftButton, {}, {bar.width() / 8, end.y()}); // on the handle
    QTest::mouseMove(&bar, end);
    QTest::mouseRelease(&bar, Qt::LeftButton, {}, end);
    for (const Qt::Key key : {Qt::Key_End, Qt::Key_Right, Qt::Key_PageUp}) {
        QTest::keyClick(&bar, key);
    }
    QWheelEvent turn(end, bar.mapToGlobal(end), {}, {0, 120}, Qt::NoButton, Qt::NoModifier,
                     Qt::NoScrollPhase, false);
    QApplication::sendEvent(&bar, &turn);
    bar.triggerAction(QAbstractSlider::SliderToMaximum); // the way of a screen reader's actions
    QAccessible::queryAccessibleInterface(&bar)->valueInterface()->setCurrentValue(80);
    EXPECT_EQ(bar.value(), 13);
    EXPECT_EQ(bar.sliderPosition(), 13);
    EXPECT_EQ(bar.doubleValue(), 12.625);
}

/// The names under which a notification for screen readers has appeared.
class Appeared final : public QObject
{
public:
    explicit Appeared(QWidget* notification) { notification->installEventFilter(this); }
    QStringList names;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Show) {
            const QAccessibleInterface& seen = *QAccessible::queryAccessibleInterface(watched);
            EXPECT_EQ(seen.role(), QAccessible::Notification);
            names.append(seen.text(QAccessible::Name));
        }
        return QObject::eventFilter(watched, event);
    }
};

class FlowAtWork : public ToolUnderTest
{
protected:
    void press(QPushButton* button)
    {
        QTest::mouseClick(button, Qt::LeftButton);
        EXPECT_TRUE(waitUntilEnabled());
        settleEvents();
    }
};

TEST_F(FlowAtWork, IsShownInTheTaskbarAndItsResultSpoken)
{
    launchAndSettle();
    EXPECT_EQ(taskbar.begins, 0) << "the update at start has no image";
    const Appeared spoken(content()->findChild<QWidget*>("flowNotice"));
    press(tool().btnRead_FwFlash);
    press(tool().btnRead_FwFlash);
    press(tool().btnUpdate_EasyUpdate);
    EXPECT_EQ(spoken.names, QStringList({"Read Fw Success", "Read Fw Success",
                                         "Wrong firmware file\nUpdate FW Fail"}));
    EXPECT_THAT(taskbar.shown, ElementsAre(10, 20, 30, 40, 50, 60, 70, 80, 90, 100, -1));
    EXPECT_EQ(taskbar.begins, 2);
}

TEST_F(FlowAtWork, SaysOnceThatItIsNotInTheTaskbar)
{
    launchAndSettle();
    taskbar.problem = "no such bus";
    testing::internal::CaptureStderr();
    press(tool().btnRead_FwFlash);
    press(tool().btnRead_FwFlash);
    EXPECT_EQ(QString::fromStdString(testing::internal::GetCapturedStderr())
                  .count("The taskbar shows no progress: no such bus\n"),
              1);
    EXPECT_EQ(taskbar.begins, 1);
}

using Alert = ToolUnderTest;

TEST_F(Alert, ShowsItsTextAndOneButtonUntilAKeyIsPressed)
{
    bool closed = false;
    runAndUse([&] { AppDelegate::showAlert("<b>Firmware</b> & format error\n"); },
              [&](QDialog& dialog) {
                  auto* alert = qobject_cast<QMessageBox*>(&dialog);
                  ASSERT_NE(alert, nullptr);
                  EXPECT_TRUE(alert->isModal());
                  EXPECT_EQ(alert->text(), "<b>Firmware</b> & format error\n");
                  EXPECT_EQ(alert->informativeText(), "");
                  ASSERT_EQ(alert->buttons().size(), 1);
                  EXPECT_EQ(alert->buttons().front()->text(), "OK");
                  EXPECT_FALSE(closed);
                  closed = true;
                  QTest::keyClick(&dialog, Qt::Key_Return);
              });
    EXPECT_TRUE(closed);
}

using GetLog = ToolUnderTest;

TEST_F(GetLog, ReplacesTheCopyOnTheDesktop)
{
    launchAndSettle();
    shell.commands.clear();
    shell.foreign = {"/tmp/Vornadel.log"}; // a log that does not exist cannot be read, either
    testing::internal::CaptureStderr();
    QTest::mouseClick(tool().btnGetLog_HelpBox, Qt::LeftButton);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Entering GetLog\n");
    EXPECT_THAT(shell.commands,
                ElementsAre("rm ~/Desktop/Vornadel.log", "cp /tmp/Vornadel.log ~/Desktop/"));
}

TEST_F(GetLog, CopiesNoFileOfAnotherUser)
{
    launchAndSettle();
    shell.commands.clear();
    shell.existing.push_back("/tmp/Vornadel.log");
    shell.foreign = {"/tmp/Vornadel.log"};
    testing::internal::CaptureStderr();
    QTest::mouseClick(tool().btnGetLog_HelpBox, Qt::LeftButton);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Entering GetLog\n/tmp/Vornadel.log is not a plain file of your own, so it is not "
              "copied\n");
    EXPECT_TRUE(shell.commands.empty());
}

} // namespace

} // namespace vornadel::test
