#include "tests/editor/PropertyPage.h"
#include "tests/support/SingleClicks.h"

#include <QAbstractItemView>
#include <QImage>
#include <QTest>

#include <optional>

namespace vornadel::test
{

namespace
{

/// A visible table with five rows: the fourth locks the third, the fifth is a constant.
class DropDown : public PropertyPage
{
protected:
    void SetUp() override
    {
        load();
        add(1, 20, 0x03);
        add(2, 21, 0x30);
        PropItem& locked = add(3, 22, 0x03);
        locked.baseOnAddr = 23;
        locked.baseOnMask = 0x80;
        add(4, 23, 0x80).propName = "Master";
        PropItem& constant = add(5, 24, 0xFF);
        constant.propList.clear();
        constant.dataList.clear();
        it().reloadTable();
        m_table.resize(460, 300);
        m_table.show();
        m_table.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&m_table));
        m_singleClicks.emplace();
    }

    QPoint at(int row, int column = 1)
    {
        return m_table.visualRect(m_table.model()->index(row, column)).center();
    }
    void click(int row, int column = 1)
    {
        QTest::mouseClick(m_table.viewport(), Qt::LeftButton, Qt::NoModifier, at(row, column));
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::keyClick(&m_table, key, modifiers);
    }
    QComboBox* list() { return m_table.viewport()->findChild<QComboBox*>(); }
    static bool isOpen() { return QApplication::activePopupWidget() != nullptr; }

    void pick(int position)
    {
        ASSERT_TRUE(isOpen());
        QAbstractItemView* view = list()->view();
        const QPoint entry = view->visualRect(view->model()->index(position, 0)).center();
        QApplication::processEvents();
        QTest::mouseMove(view->viewport(), entry);
        QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, entry);
        ASSERT_TRUE(QTest::qWaitFor([this] { return list() == nullptr; }));
    }

    std::optional<SingleClicks> m_singleClicks;
};

TEST_F(DropDown, OpensWithOneClickAndOffersTheOptions)
{
    EXPECT_EQ(list(), nullptr);
    click(0);
    ASSERT_TRUE(isOpen());
    EXPECT_EQ(list()->count(), 3);
    EXPECT_EQ(list()->itemText(0), "0 : Off");
    EXPECT_EQ(list()->itemText(2), "2 : Auto");
    EXPECT_EQ(list()->currentIndex(), 0);
}

TEST_F(DropDown, AppliesTheEntryThatIsClicked)
{
    click(1);
    pick(2);
    EXPECT_EQ(byte(21), 0x20);
    EXPECT_EQ(cell(1), "2 : Auto");
    EXPECT_EQ(redText(), "20 ");
    EXPECT_FALSE(isOpen());
    EXPECT_EQ(QApplication::focusWidget(), &m_table);
    click(1);
    EXPECT_EQ(list()->currentIndex(), 2);
}

TEST_F(DropDown, AppliesTheEntryThatWasChosenBefore)
{
    byte(20) = 0x02; // the image differs from the cell
    click(0);
    pick(0);
    EXPECT_EQ(byte(20), 0x00);
}

TEST_F(DropDown, OpensAndAppliesByKey)
{
    struct Opening {
        Qt::Key key;
        Qt::KeyboardModifiers modifiers;
    };
    std::uint8_t expected = 0;
    m_table.setFocus();
    press(Qt::Key_Down);
    m_table.setCurrentIndex(m_table.model()->index(0, 0));
    for (const Opening& each :
         {Opening{Qt::Key_Return, Qt::NoModifier}, Opening{Qt::Key_Space, Qt::NoModifier}}) {
        press(each.key, each.modifiers);
        ASSERT_TRUE(isOpen()) << each.key;
        QTest::keyClick(list()->view(), Qt::Key_Down);
        QTest::keyClick(list()->view(), Qt::Key_Return);
        ASSERT_TRUE(QTest::qWaitFor([this] { return list() == nullptr; }));
        EXPECT_EQ(byte(20), ++expected) << each.key;
    }
    for (const Opening& each :
         {Opening{Qt::Key_F2, Qt::NoModifier}, Opening{Qt::Key_Enter, Qt::KeypadModifier},
          Opening{Qt::Key_Down, Qt::AltModifier}}) {
        press(each.key, each.modifiers);
        ASSERT_TRUE(isOpen()) << each.key;
        QTest::keyClick(list()->view(), Qt::Key_Down);
        QTest::keyClick(list()->view(), Qt::Key_Escape);
        ASSERT_TRUE(QTest::qWaitFor([this] { return list() == nullptr; }));
        EXPECT_EQ(byte(20), expected) << "dismissed";
    }
    EXPECT_EQ(m_table.currentIndex().row(), 0);
    press(Qt::Key_Down);
    EXPECT_EQ(m_table.currentIndex().row(), 1) << "without Alt it is the next row";
}

TEST_F(DropDown, TakesADoubleClickForOne)
{
    m_singleClicks.reset();
    click(0);
    ASSERT_TRUE(isOpen());
    QAbstractItemView* view = list()->view();
    byte(20) = 0x02;
    const QPoint there = view->viewport()->mapFromGlobal(m_table.viewport()->mapToGlobal(at(0)));
    QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, there);
    QApplication::processEvents();
    EXPECT_TRUE(isOpen());
    EXPECT_EQ(byte(20), 0x02);
}

TEST_F(DropDown, StaysShutForAConstantAndForTheName)
{
    click(4);
    EXPECT_EQ(list(), nullptr);
    press(Qt::Key_Return);
    EXPECT_EQ(list(), nullptr);
    click(0, 0);
    EXPECT_EQ(list(), nullptr);
    EXPECT_FALSE(isOpen());
}

TEST_F(DropDown, ClosesWhenTheRowsBecomeOthers)
{
    click(0);
    ASSERT_TRUE(isOpen());
    it().propItemList.erase(it().propItemList.begin());
    it().reloadTable();
    ASSERT_TRUE(QTest::qWaitFor([this] { return list() == nullptr; }));
    EXPECT_FALSE(isOpen());
    EXPECT_EQ(allBytes(), imageWithBlock(kLength, kBlock));
}

TEST_F(DropDown, LooksLikeOneAtRest)
{
    m_table.clearFocus();
    const auto picture = [this](int row, int column) {
        return m_table.viewport()
            ->grab(m_table.visualRect(m_table.model()->index(row, column)))
            .toImage();
    };
    // The right end with the arrow looks the same in every value cell, and differs from a name
    // cell.
    const auto arrow = [](const QImage& image) {
        return image.copy(image.width() - 20, 0, 20, image.height());
    };
    const QImage value = arrow(picture(0, 1));
    EXPECT_EQ(value, arrow(picture(1, 1)));
    EXPECT_EQ(value, arrow(picture(4, 1)));
    EXPECT_NE(value, arrow(picture(0, 0)));
    EXPECT_NE(picture(0, 1), picture(4, 1)) << "the texts differ";
}

} // namespace

} // namespace vornadel::test
