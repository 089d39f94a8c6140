#include "tests/app/FlashPageUnderTest.h"

#include <QMessageBox>

namespace vornadel::test
{

namespace
{

class Focus : public FlashPageUnderTest
{
protected:
    void SetUp() override
    {
        FlashPageUnderTest::SetUp();
        writeDefinitions("other.INI", kDefinitions);
    }

    static QString focused()
    {
        const QWidget* widget = QApplication::focusWidget();
        return widget == nullptr ? QString() : widget->objectName();
    }
};

TEST_F(Focus, WaitsWhileTheButtonsAreOffAndComesBack)
{
    read();
    const QStringList before = fields();
    for (QPushButton* button : {tool().btnRead_FwFlash, tool().btnUpdate_EasyUpdate}) {
        button->setFocus();
        tool().SetButtonStatus(false);
        tool().SetButtonStatus(false);
        ASSERT_NE(QApplication::focusWidget(), nullptr);
        for (const Qt::Key key :
             {Qt::Key_Down, Qt::Key_Up, Qt::Key_Space, Qt::Key_Return, Qt::Key_A, Qt::Key_Delete}) {
            QTest::keyClick(QApplication::focusWidget(), key);
        }
        EXPECT_TRUE(allSwitched(false));
        EXPECT_EQ(fields(), before);
        EXPECT_EQ(tool().cbICType->currentIndex(), 0);
        EXPECT_EQ(tool().cbPages->currentIndex(), 0);
        tool().SetButtonStatus(true);
        EXPECT_EQ(focused(), button->objectName());
    }
}

TEST_F(Focus, StaysWhereItHasBeenMovedMeanwhile)
{
    tool().btnRead_FwFlash->setFocus();
    tool().SetButtonStatus(false);
    tool().txtSN_FwFlash->setFocus();
    tool().SetButtonStatus(true);
    EXPECT_EQ(focused(), "txtSN_FwFlash");
    // The next time it does not jump back to where it once came from, either.
    tool().SetButtonStatus(false);
    tool().SetButtonStatus(true);
    EXPECT_EQ(focused(), "txtSN_FwFlash");
}

TEST_F(Focus, GoesOnFromTheButtonWithTheTabKey)
{
    tool().btnSave_FwFlash->setFocus();
    tool().SetButtonStatus(false);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    EXPECT_EQ(focused(), "cbICType") << "the buttons between are off";
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backtab);
    EXPECT_EQ(focused(), "txtContainerID_FwFlash");
    tool().SetButtonStatus(true);
    tool().btnRead_FwFlash->setFocus();
    for (const char* next : {"btnLoad_FwFlash", "btnErase_FwFlash", "btnSave_FwFlash"}) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        EXPECT_EQ(focused(), next) << "the order is as before";
    }
}

TEST_F(Focus, ComesBackAlthoughAnAlertWasOpenWhenTheButtonsWentOff)
{
    tool().btnUpdate_EasyUpdate->setFocus();
    runAndUse([] { AppDelegate::showAlert("Wait"); },
              [this](QDialog& alert) {
                  tool().SetButtonStatus(false);
                  QTest::keyClick(&alert, Qt::Key_Return);
              });
    tool().window()->activateWindow(); // there is no window manager that does it
    ASSERT_TRUE(QTest::qWaitForWindowActive(tool().window()));
    EXPECT_FALSE(tool().cbICType->hasFocus());
    tool().SetButtonStatus(true);
    EXPECT_EQ(focused(), "btnUpdate_EasyUpdate");
}

TEST_F(Focus, StaysInTheTableWhoseOpenListIsReplaced)
{
    read();
    tool().tbProperties_Detail->setFocus();
    tool().tbProperties_Detail->setCurrentIndex(tool().tbProperties_Detail->model()->index(1, 1));
    QTest::keyClick(tool().tbProperties_Detail, Qt::Key_Space);
    ASSERT_NE(openList(), nullptr);
    tool().readFinished_FwFlash();
    settleEvents();
    EXPECT_EQ(openList(), nullptr);
    tool().window()->activateWindow(); // there is no window manager that does it
    ASSERT_TRUE(QTest::qWaitForWindowActive(tool().window()));
    EXPECT_EQ(focused(), "tbProperties_Detail");
}

} // namespace

} // namespace vornadel::test
