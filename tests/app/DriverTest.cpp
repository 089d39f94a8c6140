#include "hub/HubTransport.h"
#include "tests/app/ToolUnderTest.h"
#include "tests/support/NoMoreThreads.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QMouseEvent>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <gmock/gmock.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <sys/stat.h>

namespace vornadel::test
{

namespace
{

/// The help box's driver buttons on a machine that only records the requests.
class DriverButtons : public ToolUnderTest
{
protected:
    void launchOn(const SystemVersionNumbers& version, const std::string& bootArguments)
    {
        systemVersion.numbers = version;
        launchAndSettle();
        // The buttons are enabled a moment before the flow's thread lets go of the hub.
        ASSERT_TRUE(waitFor([this] { return privileged.holds == 0; }));
        shell.commands.clear();
        EXPECT_EQ(tool().driverCopy, "/tmp/HubUpdaterDriver.kext");
        tool().driverCopy = QString::fromStdString(directory() + "/copy");
        tool().bootArgumentsFile = QString::fromStdString(
            writeFile("snapshot", {bootArguments.begin(), bootArguments.end()}));
    }

    /// External events in order, each with whether the buttons were enabled at that moment.
    void watchSteps()
    {
        shell.onRun = [this] { m_steps.push_back(shell.commands.back() + state()); };
        privileged.onStart = [this] { m_steps.push_back(privileged.scripts.back() + state()); };
    }

    void pressLoad() { QTest::mouseClick(tool().nsbtnLoadDriver_HelpBox, Qt::LeftButton); }

    /// Presses "LoadUpdateDriver" and a button of the prompt that follows.
    void loadAndAnswer(const QString& answer)
    {
        clickAndUse(tool().nsbtnLoadDriver_HelpBox, [&](QDialog& dialog) {
            auto* prompt = qobject_cast<QMessageBox*>(&dialog);
            ASSERT_NE(prompt, nullptr);
            EXPECT_TRUE(allSwitched(true)) << "already";
            for (QAbstractButton* button : prompt->buttons()) {
                if (button->text() == answer) {
                    QTest::mouseClick(button, Qt::LeftButton);
                    return;
                }
            }
            ADD_FAILURE() << "no such button";
        });
    }

    /// Whether an action quits the tool; the event loop runs meanwhile.
    static bool quitsBy(const std::function<void()>& action)
    {
        constexpr int kGoesOn = 7;
        QTimer ends; // local, so that it cannot end a later event loop
        QObject::connect(&ends, &QTimer::timeout, &ends, [] { QApplication::exit(kGoesOn); });
        QTimer::singleShot(0, qApp, [&] {
            action();
            ends.start(0);
        });
        return QApplication::exec() != kGoesOn;
    }

    std::vector<std::string> m_steps;

private:
    std::string state() { return allSwitched(false) ? " (off)" : " (on)"; }
};

const SystemVersionNumbers kWantsBootArgument{10, 10, 5, 0};
const SystemVersionNumbers kModern{12, 4, 0, 0};

TEST_F(DriverButtons, CopyTheBundleAndStartTheLoadScript)
{
    launchOn(kModern, "");
    const std::string pipe = directory() + "/pipe"; // reading this snapshot would never end
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    tool().bootArgumentsFile = QString::fromStdString(pipe);
    watchSteps();
    testing::internal::CaptureStderr();
    pressLoad();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Enter LoadUpdateDriver\n");
    EXPECT_EQ(m_steps, (std::vector<std::string>{
                           "cp -R " + resources() + "/HubUpdaterDriver.kext /tmp (off)",
                           resources() + "/load (off)",
                       }));
    EXPECT_TRUE(allSwitched(true));
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr)
        << "no reboot is asked for on such a system";
}

TEST_F(DriverButtons, CopyNothingToWhatIsSomebodyElses)
{
    launchOn(kModern, "");
    std::filesystem::create_symlink(directory(), directory() + "/copy");
    testing::internal::CaptureStderr();
    pressLoad();
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Enter LoadUpdateDriver\n" + directory() +
                  "/copy is not a folder; the driver is not copied there\n");
    EXPECT_EQ(shell.commands, std::vector<std::string>{});
    EXPECT_EQ(privileged.scripts, std::vector<std::string>{resources() + "/load"})
        << "all the same";
}

TEST_F(DriverButtons, RunNothingWithAPathThatTheShellWouldMisread)
{
    const std::string bundle = directory() + "/line\nbreak/Vornadel.app";
    place = {bundle, true, bundle + "/Contents/Resources"};
    launchOn(kModern, "");
    testing::internal::CaptureStderr();
    pressLoad();
    EXPECT_EQ(
        testing::internal::GetCapturedStderr(),
        "Enter LoadUpdateDriver\nthe tool's path contains a line break, a tab or another "
        "control character, which the shell would misread; move the tool to another folder\n");
    EXPECT_EQ(shell.commands, std::vector<std::string>{});
    EXPECT_EQ(privileged.scripts, std::vector<std::string>{});
    EXPECT_TRUE(allSwitched(true));
}

TEST_F(DriverButtons, SayWhereNobodyCanBeAskedForRights)
{
    launchOn(kModern, "");
    privileged.able = false;
    testing::internal::CaptureStderr();
    pressLoad();
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Enter LoadUpdateDriver\ncannot ask for administrator rights here; run \"" +
                  resources() + "/load\" as root\n");
    EXPECT_TRUE(allSwitched(true));
}

TEST_F(DriverButtons, AskForNoRebootWhereTheSnapshotAllowsTheDriver)
{
    launchOn(kWantsBootArgument, "boot-args\tkext-dev-mode=1 debug=0x144\n");
    pressLoad();
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
    EXPECT_EQ(privileged.scripts.size(), 1U);
}

TEST_F(DriverButtons, ReadNoSnapshotOfAnotherUser)
{
    launchOn(kWantsBootArgument, "boot-args\tkext-dev-mode=1\n");
    shell.foreign = {tool().bootArgumentsFile.toStdString()};
    loadAndAnswer("Reboot Now");
    EXPECT_EQ(privileged.scripts.size(), 2U) << "the reboot is asked for";
}

TEST_F(DriverButtons, AskForARebootWithTwoButtonsInOrder)
{
    launchOn(kWantsBootArgument, "boot-args\tdebug=0x144\n");
    const auto look = [](QDialog& dialog) {
        auto* prompt = qobject_cast<QMessageBox*>(&dialog);
        ASSERT_NE(prompt, nullptr);
        EXPECT_EQ(prompt->text(),
                  "Your MacOS is 10.10 or later,some params have been set to your Mac. Now,please "
                  "reboot to allow morvane kernel kext\n ");
        EXPECT_EQ(prompt->informativeText(), "");
        ASSERT_EQ(prompt->buttons().size(), 2);
        EXPECT_EQ(prompt->buttons().at(0)->text(), "Cancel");
        EXPECT_EQ(prompt->buttons().at(1)->text(), "Reboot Now");
        EXPECT_LT(prompt->buttons().at(0)->x(), prompt->buttons().at(1)->x());
        QTest::keyClick(prompt, Qt::Key_Escape);
        EXPECT_TRUE(prompt->isVisible()) << "no answer";
        prompt->done(-1); // neither
    };
    EXPECT_FALSE(quitsBy([&] { clickAndUse(tool().nsbtnLoadDriver_HelpBox, look); }));
    EXPECT_EQ(privileged.scripts, std::vector<std::string>{resources() + "/load"})
        << "nothing happens then";
}

TEST_F(DriverButtons, RebootAndLeaveTheToolRunning)
{
    launchOn(kWantsBootArgument, "");
    EXPECT_FALSE(quitsBy([this] { loadAndAnswer("Reboot Now"); }));
    EXPECT_EQ(privileged.scripts,
              (std::vector<std::string>{resources() + "/load", resources() + "/reboot"}));
    EXPECT_TRUE(tool().window()->isVisible());
    loadAndAnswer("Reboot Now"); // the snapshot is still the same
    EXPECT_EQ(privileged.scripts.size(), 4U);
}

TEST_F(DriverButtons, QuitTheToolWhenTheRebootIsCancelled)
{
    launchOn(kWantsBootArgument, "");
    std::string console;
    EXPECT_TRUE(quitsBy([&] {
        testing::internal::CaptureStderr();
        loadAndAnswer("Cancel");
        console = testing::internal::GetCapturedStderr();
    }));
    EXPECT_THAT(console, testing::EndsWith("User abort start !!!\n"));
    EXPECT_EQ(privileged.scripts, std::vector<std::string>{resources() + "/load"});
}

TEST_F(DriverButtons, SendTheHubBackToItsFirmwareAfterUnloading)
{
    hubOptions.mode = HubCode::Rom;
    launchOn(kModern, "");
    watchSteps();
    const auto note = privileged.onStart;
    privileged.onStart = [&] {
        note();
        EXPECT_EQ(hub().runningCode(), HubCode::Rom) << "the script comes first";
        EXPECT_EQ(privileged.holds, 1);
    };
    hub().onRequest = [&](const ControlRequest& request) {
        constexpr std::uint8_t kRestartIntoFlash = 0xE9;
        if (request.bRequest == kRestartIntoFlash) {
            EXPECT_EQ(privileged.holds, 1) << "or the script would take the access away";
            EXPECT_NE(QThread::currentThread(), qApp->thread()) << "which goes on painting";
        }
    };
    testing::internal::CaptureStderr();
    QTest::mouseClick(tool().nsbtnUnloadDriver_HelpBox, Qt::LeftButton);
    EXPECT_TRUE(allSwitched(false)) << "until the hub is back";
    ASSERT_TRUE(waitUntilEnabled());
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                testing::StartsWith("Enter UnloadUpdateDriver\n"));
    EXPECT_EQ(m_steps, std::vector<std::string>{resources() + "/unload (off)"});
    EXPECT_EQ(privileged.holds, 0);
    EXPECT_EQ(hub().runningCode(), HubCode::Flash);
    EXPECT_FALSE(Hub_IsOpen());

    privileged.onStart = nullptr;
    hub().unplug(); // the script runs without a hub, too
    const Clock::Duration before = clock().now();
    QTest::mouseClick(tool().nsbtnUnloadDriver_HelpBox, Qt::LeftButton);
    ASSERT_TRUE(waitUntilEnabled());
    EXPECT_EQ(privileged.scripts.size(), 2U);
    EXPECT_EQ(clock().now(), before) << "and nobody waits for one";
}

TEST_F(DriverButtons, SendTheHubBackWhereNoThreadCanBeStarted)
{
    hubOptions.mode = HubCode::Rom;
    launchOn(kModern, "");
    {
        const NoMoreThreads none;
        QTest::mouseClick(tool().nsbtnUnloadDriver_HelpBox, Qt::LeftButton);
    }
    EXPECT_EQ(hub().runningCode(), HubCode::Flash);
    EXPECT_TRUE(allSwitched(true));
}

TEST_F(DriverButtons, LeaveTheHubAloneWhileItsAccessIsTakenAway)
{
    hubOptions.mode = HubCode::Rom;
    launchOn(kModern, "");
    privileged.scriptAtWork = true;
    testing::internal::CaptureStderr();
    QTest::mouseClick(tool().nsbtnUnloadDriver_HelpBox, Qt::LeftButton);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Enter UnloadUpdateDriver\naccess to the hub is being withdrawn; the hub is left as "
              "it is\n");
    EXPECT_EQ(hub().runningCode(), HubCode::Rom);
    EXPECT_EQ(privileged.scripts.size(), 1U);
}

TEST_F(DriverButtons, KeepTheAccessAndTheMachineAwakeWhileAFlowRuns)
{
    launchOn(kModern, "");
    hub().onRequest = [this](const ControlRequest& /*request*/) {
        if (QThread::currentThread() != qApp->thread()) {
            EXPECT_EQ(privileged.holds, 1);
            EXPECT_EQ(sleep.holds, 1);
        }
    };
    tool().SetButtonStatus(true);
    QTest::mouseClick(tool().btnRead_FwFlash, Qt::LeftButton);
    ASSERT_TRUE(waitUntilEnabled());
    ASSERT_TRUE(waitFor([this] { return privileged.holds == 0 && sleep.holds == 0; }));
}

TEST_F(DriverButtons, RunAFlowOnAMachineThatCannotBeKeptAwake)
{
    launchOn(kModern, "");
    sleep.problem = "no logind";
    testing::internal::CaptureStderr();
    QTest::mouseClick(tool().btnErase_FwFlash, Qt::LeftButton);
    ASSERT_TRUE(waitUntilEnabled());
    ASSERT_TRUE(waitFor([this] { return privileged.holds == 0; }));
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                testing::StartsWith("The machine may go to sleep: no logind\n"));
    EXPECT_EQ(hub().flash().front(), 0xFF) << "erased all the same";
}

TEST_F(DriverButtons, StartNoFlowWhileTheAccessIsTakenAway)
{
    launchOn(kModern, "");
    privileged.scriptAtWork = true;
    const std::size_t requests = hub().requestCount();
    QTest::mouseClick(tool().btnErase_FwFlash, Qt::LeftButton);
    EXPECT_EQ(progressText(), "Fail to start: access to the hub is being withdrawn\n");
    EXPECT_TRUE(allSwitched(true));
    EXPECT_EQ(hub().requestCount(), requests);
}

TEST_F(DriverButtons, KeepNoPressForTheTimeAfter)
{
    launchOn(kModern, "");
    privileged.onStart = [this] {
        QWidget& button = *tool().nsbtnUnloadDriver_HelpBox;
        const QPointF middle = button.rect().center();
        for (const QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
            QApplication::postEvent(
                &button,
                new QMouseEvent(type, middle, button.mapToGlobal(middle), Qt::LeftButton,
                                type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton,
                                Qt::NoModifier));
        }
    };
    QTest::mouseClick(tool().nsbtnUnloadDriver_HelpBox, Qt::LeftButton);
    settleEvents();
    EXPECT_EQ(privileged.scripts.size(), 1U);
}

} // namespace

} // namespace vornadel::test
