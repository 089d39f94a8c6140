#include "tests/app/ToolUnderTest.h"

#include <QApplication>
#include <QComboBox>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QTest>

#include <set>

namespace vornadel::test
{

namespace
{

class SmallScreen : public ToolUnderTest
{
protected:
    void SetUp() override
    {
        const QSize screen = QApplication::primaryScreen()->availableSize();
        ASSERT_LT(screen.width(), 1200);
        ASSERT_GT(screen.width(), 360);
    }

    QScrollArea& area() { return *qobject_cast<QScrollArea*>(tool().window()); }
};

TEST_F(SmallScreen, ScrollsTheContentInsteadOfCuttingIt)
{
    launchAndSettle();
    const QSize screen = QApplication::primaryScreen()->availableSize();
    EXPECT_EQ(content()->size(), QSize(1200, 660));
    EXPECT_LE(tool().window()->width(), screen.width());
    EXPECT_LE(tool().window()->height(), screen.height());
    EXPECT_TRUE(area().horizontalScrollBar()->isVisible());
    EXPECT_EQ(area().horizontalScrollBar()->maximum(), 1200 - area().viewport()->width());
    EXPECT_EQ(area().verticalScrollBar()->maximum(), 660 - area().viewport()->height());

    EXPECT_TRUE(tool().cbICType->visibleRegion().isEmpty());
    area().horizontalScrollBar()->setValue(area().horizontalScrollBar()->maximum());
    settleEvents();
    EXPECT_EQ(tool().cbICType->visibleRegion().boundingRect(), tool().cbICType->rect());
}

TEST_F(SmallScreen, FollowsTheFocus)
{
    launchAndSettle();
    tool().window()->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(tool().window()));
    tool().nstfHubInfo_UpdateFW->setFocus();
    std::set<const QWidget*> visited;
    while (visited.insert(QApplication::focusWidget()).second) {
        ASSERT_NE(QApplication::focusWidget(), nullptr);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        settleEvents();
        const QWidget* here = QApplication::focusWidget();
        EXPECT_EQ(here->visibleRegion().boundingRect().width(), here->width())
            << here->objectName().toStdString();
    }
    EXPECT_EQ(visited.size(), 33U);
}

} // namespace

} // namespace vornadel::test
