#include "app/ScreenFit.h"
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
    EXPECT_GT(tool().window()->frameGeometry().width(), tool().window()->width());
    EXPECT_EQ(tool().window()->frameGeometry().width(), screen.width()) << "its frame is measured";
    EXPECT_LE(tool().window()->frameGeometry().height(), screen.height());
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
    tool().nstfUpdateInfo_UpdateFW->setFocus();
    std::set<const QWidget*> visited;
    while (visited.insert(QApplication::focusWidget()).second) {
        ASSERT_NE(QApplication::focusWidget(), nullptr);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        settleEvents();
        const QWidget* here = QApplication::focusWidget();
        EXPECT_EQ(here->visibleRegion().boundingRect().width(), here->width())
            << here->objectName().toStdString();
    }
    EXPECT_EQ(visited.size(), 22U);
}

class FitIntoRoom : public SmallScreen, public testing::WithParamInterface<bool>
{
};

INSTANTIATE_TEST_SUITE_P(Modes, FitIntoRoom, testing::Bool(),
                         [](const auto& mode) { return mode.param ? "Scalar" : "Normal"; });

TEST_P(FitIntoRoom, ShowsTheBarsItNeedsAndNoOther)
{
    config = configText(GetParam() ? "ScalarMode = 1\n" : "");
    launch();
    const QSize whole = content()->size();
    const int bar = area().verticalScrollBar()->sizeHint().width();
    ScreenFit* fit = nullptr;
    for (QObject* each : area().children()) {
        fit = fit == nullptr ? dynamic_cast<ScreenFit*>(each) : fit;
    }
    ASSERT_NE(fit, nullptr);
    for (const int width : {640, 1014, 1199, 1200, 1215, 1216, 1217, 1270, 1356, 3000}) {
        for (const int height :
             {440, 560, 650, 659, 660, 669, 670, 675, 676, 685, 686, 728, 2000}) {
            const QSize room(width, height);
            SCOPED_TRACE(std::to_string(width) + " by " + std::to_string(height));
            fit->fitInto(room);
            settleEvents();
            bool across = whole.width() > width;
            const bool down = whole.height() + (across ? bar : 0) > height;
            across = whole.width() + (down ? bar : 0) > width;
            EXPECT_EQ(area().horizontalScrollBar()->isVisible(), across);
            EXPECT_EQ(area().verticalScrollBar()->isVisible(), down);
            EXPECT_EQ(area().viewport()->width(),
                      across ? width - (down ? bar : 0) : whole.width());
            EXPECT_EQ(area().viewport()->height(),
                      down ? height - (across ? bar : 0) : whole.height());
            area().setMinimumSize(0, 0);                // a window manager need not respect it
            area().resize(area().size() - QSize(1, 1)); // as one that rounds
            settleEvents();
            EXPECT_EQ(area().horizontalScrollBar()->isVisible(), across);
            EXPECT_EQ(area().verticalScrollBar()->isVisible(), down);
            area().resize(300, 300); // as one that tiles
            settleEvents();
            EXPECT_TRUE(area().horizontalScrollBar()->isVisible());
            EXPECT_TRUE(area().verticalScrollBar()->isVisible());
        }
    }
}

} // namespace

} // namespace vornadel::test
