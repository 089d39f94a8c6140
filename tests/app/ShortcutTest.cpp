#include "tests/app/FlashPageUnderTest.h"

#include <QDesktopServices>
#include <QFileDialog>
#include <QTextBrowser>
#include <QUrl>
#include <gmock/gmock.h>

namespace vornadel::test
{

namespace
{

class Shortcut : public FlashPageUnderTest
{
protected:
    /// From a field, because shortcuts work wherever the focus is.
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::ControlModifier)
    {
        tool().window()->activateWindow(); // after a panel, there is no window manager that does
        EXPECT_TRUE(QTest::qWaitForWindowActive(tool().window()));
        tool().txtSN_FwFlash->setFocus();
        QTest::keyClick(tool().txtSN_FwFlash, key, modifiers);
    }
};

TEST_F(Shortcut, PressesTheButton)
{
    press(Qt::Key_R);
    EXPECT_TRUE(allSwitched(false));
    EXPECT_TRUE(waitUntilEnabled());
    EXPECT_EQ(fields(), demoFields());
    EXPECT_TRUE(tool().txtSN_FwFlash->hasFocus());
    for (const Qt::Key key : {Qt::Key_O, Qt::Key_S}) {
        bool saves = false;
        runAndUse([&] { press(key); },
                  [&](QDialog& panel) {
                      saves =
                          dynamic_cast<QFileDialog&>(panel).acceptMode() == QFileDialog::AcceptSave;
                      panel.reject();
                  });
        EXPECT_EQ(saves, key == Qt::Key_S);
    }
}

TEST_F(Shortcut, DoesNothingWhileTheButtonIsOffOrHidden)
{
    const auto pressAll = [this] {
        const unsigned requests = hub().requestCount();
        for (const Qt::Key key : {Qt::Key_R, Qt::Key_O, Qt::Key_S}) {
            press(key);
        }
        settleEvents();
        EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
        EXPECT_EQ(hub().requestCount(), requests);
    };
    tool().SetButtonStatus(false);
    pressAll();
    end();
    config = configText("ScalarMode = 1\n");
    SetUp();
    pressAll();
}

TEST_F(Shortcut, IsListedInATipWhereItWorks)
{
    EXPECT_EQ(tool().boxHelp->toolTip(),
              "Ctrl+R: Read From Flash\nCtrl+O: Load From *.bin\nCtrl+S: Save to *.bin\n"
              "Ctrl+Z: undo an edit\nCtrl+Shift+Z: repeat it\nCtrl+F: find a property\n"
              "Ctrl+C: copy the selected rows\nF1: the manual");
    end();
    config = configText("ScalarMode = 1\n");
    SetUp();
    EXPECT_EQ(tool().boxHelp->toolTip(), "F1: the manual");
}

TEST_F(Shortcut, ShowsTheManual)
{
    QTextBrowser desktop; // shows files in place of the desktop
    QDesktopServices::setUrlHandler("file", &desktop, "setSource");
    testing::internal::CaptureStderr();
    press(Qt::Key_F1, Qt::NoModifier);
    EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::HasSubstr("there is no manual"));
    EXPECT_TRUE(desktop.source().isEmpty());
    const std::string path = writeFile("README.md", {'T', 'o'});
    press(Qt::Key_F1, Qt::NoModifier);
    EXPECT_EQ(desktop.source().toLocalFile().toStdString(), path);
    writeFile("Vornadel.app/Contents/Resources/README.md", {'T', 'o'});
    press(Qt::Key_F1, Qt::NoModifier);
    EXPECT_EQ(desktop.source().toLocalFile().toStdString(), resources() + "/README.md");
    QDesktopServices::unsetUrlHandler("file");
}

} // namespace

} // namespace vornadel::test
