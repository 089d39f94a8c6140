#include "tests/app/ToolUnderTest.h"

#include <QApplication>
#include <QEvent>
#include <QPushButton>
#include <QTest>
#include <gmock/gmock.h>

#include <algorithm>
#include <string>
#include <utility>

namespace vornadel::test
{

namespace
{

class Buttons : public ToolUnderTest
{
protected:
    /// Real clicks on all visible ones of the ten.
    void clickWhatIsThere(int expected)
    {
        int clicked = 0;
        for (QPushButton* button : switchedButtons()) {
            if (button->isVisible()) {
                QTest::mouseClick(button, Qt::LeftButton);
                QTest::keyClick(button, Qt::Key_Space);
                ++clicked;
            }
        }
        EXPECT_EQ(clicked, expected);
    }
};

TEST_F(Buttons, SwitchInTheirOrderAndAlone)
{
    class Watch final : public QObject
    {
    public:
        bool eventFilter(QObject* watched, QEvent* event) override
        {
            if (event->type() == QEvent::EnabledChange) {
                names.append(watched->objectName());
            }
            return false;
        }
        QStringList names;
    };
    launchAndSettle();
    Watch watch;
    for (QWidget* widget : content()->findChildren<QWidget*>()) {
        widget->installEventFilter(&watch);
    }
    tool().SetButtonStatus(false);
    tool().SetButtonStatus(false);
    EXPECT_EQ(watch.names,
              (QStringList{"nsbtnSelect_Scalar", "btnLoad_FwFlash", "btnSave_FwFlash",
                           "btnSelect_EasyUpdate", "nsbtnLoadDriver_HelpBox",
                           "nsbtnUnloadDriver_HelpBox", "btnRead_FwFlash", "btnErase_FwFlash",
                           "btnUpdate_EasyUpdate", "nsbtnUpdate_Scalar"}));
    tool().SetButtonStatus(true);
    EXPECT_TRUE(allSwitched(true));
}

TEST_F(Buttons, DoNothingDuringAnUpdate)
{
    const std::pair<const char*, int> visibleIn[] = {{"ScalarMode = 0\n", 8},
                                                     {"ScalarMode = 1\n", 4}};
    for (const auto& [mode, visible] : visibleIn) {
        launchAndHold(mode);
        EXPECT_TRUE(allSwitched(false));
        const std::string text = progressText();
        const unsigned requests = hub().requestCount();
        const auto commands = shell.commands;

        testing::internal::CaptureStderr();
        clickWhatIsThere(visible);
        settleEvents();
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
        EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
        EXPECT_EQ(progressText(), text);
        EXPECT_EQ(hub().requestCount(), requests);
        EXPECT_EQ(shell.commands, commands);

        eraseGate.open();
        EXPECT_TRUE(waitUntilEnabled());
        settleEvents();
        EXPECT_THAT(progressText(), testing::EndsWith("Update FW Success\n"))
            << "and no second run follows";
        end();
    }
}

} // namespace

} // namespace vornadel::test
