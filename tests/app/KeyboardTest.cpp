#include "tests/app/ToolUnderTest.h"

#include <QAccessible>
#include <QApplication>
#include <QTest>

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
    EXPECT_EQ(expected.size(), GetParam() ? 9U : 33U);
    tool().nstfHubInfo_UpdateFW->setFocus();
    EXPECT_EQ(walk(), expected);
}

TEST_P(Keyboard, TellsAScreenReaderWhatEverythingIs)
{
    for (QWidget* widget : content()->findChildren<QWidget*>()) {
        if (widget->focusPolicy() == Qt::NoFocus || widget->objectName().startsWith("qt_")) {
            continue;
        }
        QAccessibleInterface* heard = QAccessible::queryAccessibleInterface(widget);
        ASSERT_NE(heard, nullptr);
        EXPECT_FALSE(heard->text(QAccessible::Name).trimmed().isEmpty())
            << widget->objectName().toStdString();
    }
}

} // namespace

} // namespace vornadel::test
