#include "tests/app/ToolUnderTest.h"

#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <gmock/gmock.h>

#include <set>
#include <string>

namespace vornadel::test
{

namespace
{

class Keyboard : public ToolUnderTest, public testing::WithParamInterface<bool>
{
protected:
    Keyboard() { config = configText(GetParam() ? "ScalarMode = 1\n" : ""); }

    void SetUp() override
    {
        launchAndSettle();
        tool().window()->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(tool().window()));
    }

    /// All visible widgets that take the focus by key.
    std::set<std::string> stops() const
    {
        std::set<std::string> names;
        for (const QWidget* widget : content()->findChildren<QWidget*>()) {
            if (widget->isVisible() && widget->isEnabled() &&
                (widget->focusPolicy() & Qt::TabFocus) != 0 && widget->focusProxy() == nullptr) {
                names.insert(widget->objectName().toStdString());
            }
        }
        return names;
    }

    /// Goes through the focus chain once with the tab key.
    static std::set<std::string> walk()
    {
        std::set<std::string> visited;
        for (int step = 0; step < 200; ++step) {
            QWidget* here = QApplication::focusWidget();
            if (here == nullptr || !visited.insert(here->objectName().toStdString()).second) {
                break;
            }
            QTest::keyClick(here, Qt::Key_Tab);
        }
        return visited;
    }
};

INSTANTIATE_TEST_SUITE_P(Modes, Keyboard, testing::Bool(),
                         [](const auto& mode) { return mode.param ? "Scalar" : "Normal"; });

TEST_P(Keyboard, ReachesEverythingWithTheTabKey)
{
    const std::set<std::string> expected = stops();
    EXPECT_EQ(expected.size(), GetParam() ? 6U : 22U);
    tool().nstfUpdateInfo_UpdateFW->setFocus();
    EXPECT_EQ(walk(), expected);
}

TEST_P(Keyboard, PassesReadOnlyFieldsByButTheMouseReachesThem)
{
    tool().txtFw_EasyUpdate->setText("a.bin");
    tool().nstextfd_Scalar->setText("a.bin");
    int found = 0;
    for (QLineEdit* field : content()->findChildren<QLineEdit*>()) {
        if (field->isVisible() && field->isReadOnly()) {
            ++found;
            EXPECT_EQ(stops().count(field->objectName().toStdString()), 0U);
            QTest::mouseDClick(field, Qt::LeftButton, {}, {10, field->height() / 2});
            EXPECT_TRUE(field->hasFocus()) << field->objectName().toStdString();
            EXPECT_EQ(field->selectedText().isEmpty(), field->text().isEmpty());
        }
    }
    EXPECT_EQ(found, GetParam() ? 1 : 9);
}

TEST_P(Keyboard, PressesTheFocusedButtonWithReturnOnceHoweverLongItIsHeld)
{
    for (const int key : {Qt::Key_Return, Qt::Key_Enter}) {
        shell.commands.clear();
        tool().btnGetLog_HelpBox->setFocus();
        QTest::keyPress(tool().btnGetLog_HelpBox, static_cast<Qt::Key>(key));
        EXPECT_EQ(shell.commands.size(), 2U);
        QKeyEvent held(QEvent::KeyPress, key, Qt::NoModifier, QString(), true);
        QApplication::sendEvent(tool().btnGetLog_HelpBox, &held);
        EXPECT_EQ(shell.commands.size(), 2U);
    }
}

TEST_P(Keyboard, TakesNoCharacterOfATextForAMnemonic)
{
    for (const QPushButton* button : content()->findChildren<QPushButton*>()) {
        EXPECT_TRUE(button->shortcut().isEmpty()) << button->text().toStdString();
    }
    for (const QLabel* label : content()->findChildren<QLabel*>()) {
        EXPECT_TRUE(label->buddy() == nullptr || !label->text().contains('&'));
    }
}

std::string heardOf(QWidget& widget, QAccessible::Text kind)
{
    const QAccessibleInterface* heard = QAccessible::queryAccessibleInterface(&widget);
    return heard == nullptr ? "" : heard->text(kind).trimmed().toStdString();
}

TEST_P(Keyboard, TellsAScreenReaderWhatEverythingIs)
{
    for (QWidget* widget : content()->findChildren<QWidget*>()) {
        if (widget->focusPolicy() == Qt::NoFocus || widget->objectName().startsWith("qt_")) {
            continue;
        }
        EXPECT_NE(heardOf(*widget, QAccessible::Name), "") << widget->objectName().toStdString();
    }
    for (QPushButton* button : content()->findChildren<QPushButton*>()) {
        EXPECT_NE(heardOf(*button, QAccessible::Description), "") << button->text().toStdString();
        EXPECT_EQ(heardOf(*button, QAccessible::Description), button->toolTip().toStdString());
    }
    EXPECT_THAT(heardOf(*tool().btnErase_FwFlash, QAccessible::Description),
                testing::HasSubstr("at once, without asking"));
    EXPECT_THAT(heardOf(*tool().btnLoad_FwFlash, QAccessible::Description),
                testing::EndsWith(" (Ctrl+O)"));
}

TEST_P(Keyboard, TellsAScreenReaderWhichLabelIsThatOfAList)
{
    for (QComboBox* combo : {tool().cbPages, tool().cbICType}) {
        const auto relations =
            QAccessible::queryAccessibleInterface(combo)->relations(QAccessible::Label);
        ASSERT_EQ(relations.size(), 1);
        EXPECT_EQ(relations.front().first->text(QAccessible::Name), combo->accessibleName());
        EXPECT_NE(heardOf(*combo, QAccessible::Description), "");
    }
}

TEST_P(Keyboard, TellsAScreenReaderThatEachBoxIsAGroup)
{
    for (TitledBox* box : {tool().boxHelp, tool().boxScalar, tool().boxUpdate, tool().boxEasyUpdate,
                           tool().boxFwFlash, tool().boxDetail}) {
        EXPECT_EQ(QAccessible::queryAccessibleInterface(box)->role(), QAccessible::Grouping);
        EXPECT_EQ(heardOf(*box, QAccessible::Name), box->title().toStdString());
    }
}

} // namespace

} // namespace vornadel::test
