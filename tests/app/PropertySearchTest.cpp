// Finding properties: by name with Ctrl+F, by their byte with a click into the hex view.

#include "tests/app/FlashPageUnderTest.h"

#include <QScrollBar>

namespace vornadel::test
{

namespace
{

class PropertyFinding : public FlashPageUnderTest
{
protected:
    void SetUp() override
    {
        FlashPageUnderTest::SetUp();
        read();
        tool().txtVID_FwFlash->setFocus();
    }

    void find(const QString& text)
    {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_F, Qt::ControlModifier);
        ASSERT_EQ(QApplication::focusWidget(), line());
        QTest::keyClicks(line(), text);
    }
    QLineEdit* line() { return tool().txtFind_Detail; }
    QStringList firstPage() { return {"Unbound", "Spread Spectrum", "Depth", "Fixed"}; }
};

TEST_F(PropertyFinding, ListsThoseOfAllPagesWithTheText)
{
    EXPECT_FALSE(line()->isVisible());
    find("RA");
    EXPECT_EQ(names(), QStringList{"Rate"});
    QTest::keyClick(line(), Qt::Key_Backspace);
    ASSERT_EQ(names(), (QStringList{"Spread Spectrum", "Rate"})) << "none that no page lists";
    const auto tip = [this](int row) {
        return tool().tbProperties_Detail->model()->index(row, 0).data(Qt::ToolTipRole).toString();
    };
    EXPECT_EQ(tip(0), "Spread Spectrum\nPage: SSC");
    EXPECT_TRUE(tip(1).startsWith("Rate\nPage: System\n"));
    choose(0, 1);
    ASSERT_EQ(value(0), "1 : Enable"); // unlocks the other
    EXPECT_EQ(redText(), "01 ");
    choose(1, 1);
    EXPECT_EQ(value(1), "1 : Fast");
    EXPECT_EQ(redText(), "7D ");
    line()->setFocus();
    QTest::keyClick(line(), Qt::Key_Down);
    EXPECT_EQ(QApplication::focusWidget(), tool().tbProperties_Detail);
    QTest::keyClick(tool().tbProperties_Detail, Qt::Key_Up);
    EXPECT_TRUE(tool().txtViewDesc_Detail->toPlainText().contains("Spreads the clock"));
}

TEST_F(PropertyFinding, EndsWithEscapeAndWithAnEmptyLine)
{
    find("rate");
    QTest::keyClick(line(), Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(line(), Qt::Key_Delete);
    EXPECT_EQ(names(), firstPage());
    EXPECT_TRUE(line()->isVisible()) << "for another text";
    QTest::keyClicks(line(), "depth");
    EXPECT_EQ(names(), QStringList{"Depth"});
    QTest::keyClick(line(), Qt::Key_Escape);
    EXPECT_EQ(names(), firstPage());
    EXPECT_FALSE(line()->isVisible());
    EXPECT_EQ(QApplication::focusWidget(), tool().tbProperties_Detail);
    find("depth");
    EXPECT_EQ(line()->text(), "depth") << "it begins empty";
}

TEST_F(PropertyFinding, EndsWhenAPageIsChosen)
{
    find("rate");
    select(tool().cbPages, 1);
    EXPECT_EQ(rows(), 0);
    EXPECT_FALSE(line()->isVisible());
    find("rate");
    tool().cbPages->setFocus();
    emit tool().cbPages->activated(1); // the page that is selected already
    EXPECT_EQ(rows(), 0);
    EXPECT_FALSE(line()->isVisible());
}

TEST_F(PropertyFinding, LeavesTheLineToItsUserWhenAReadEnds)
{
    find("rate");
    tool().readFinished_FwFlash();
    EXPECT_EQ(names(), firstPage());
    EXPECT_EQ(QApplication::focusWidget(), line());
    QTest::keyClicks(line(), "depth");
    EXPECT_EQ(names(), QStringList{"Depth"});

    QWidget other; // is active when another read ends
    other.show();
    other.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    tool().readFinished_FwFlash();
    tool().window()->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(tool().window()));
    EXPECT_EQ(QApplication::focusWidget(), line());
}

TEST_F(PropertyFinding, SelectsTheFirstPropertyOfAByteThatIsClicked)
{
    TextView& hex = *tool().txtViewBin_Detail;
    const auto clickByte = [&](int byte) {
        QTextCursor digit(hex.document());
        digit.setPosition(byte / 16 * 57 + 6 + 3 * (byte % 16) + (byte % 16 >= 8 ? 2 : 0) + 1);
        QTest::mouseClick(hex.viewport(), Qt::LeftButton, {}, hex.cursorRect(digit).center());
    };
    const auto selected = [this] {
        const auto rows = tool().tbProperties_Detail->selectionModel()->selectedRows();
        return rows.isEmpty() ? QString() : name(rows.front().row());
    };
    const SingleClicks clicks;
    clickByte(9);
    EXPECT_EQ(selected(), "Spread Spectrum");
    clickByte(20);
    EXPECT_EQ(selected(), "Unbound") << "the first of two";
    clickByte(21);
    EXPECT_EQ(selected(), "Unbound") << "none, so nothing changes";
    hex.verticalScrollBar()->setValue(1);
    clickByte(22);
    EXPECT_EQ(tool().cbPages->currentText(), "System");
    EXPECT_EQ(selected(), "Rate");
    EXPECT_EQ(hex.verticalScrollBar()->value(), 1);
}

} // namespace

} // namespace vornadel::test
