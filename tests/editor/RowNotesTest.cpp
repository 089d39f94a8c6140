// What the table shows of a row beside name and value, and what its rows do.

#include "tests/editor/PropertyPage.h"
#include "tests/support/Contrast.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QTest>

namespace vornadel::test
{

namespace
{

class Rows : public PropertyPage
{
protected:
    void SetUp() override
    {
        load();
        it().history().replaced();
        add(1, 20, 0x03);
        add(2, 21, 0x03).baseOnAddr = 22;
        it().propItemList[1]->baseOnMask = 0x10;
        add(3, 22, 0x10).propName = "Master";
        it().reloadTable();
        m_table.resize(460, 300);
        m_table.show();
        m_table.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&m_table));
    }

    QVariant data(int row, int column, int role)
    {
        return m_table.model()->index(row, column).data(role);
    }
    QString tip(int row, int column = 1) { return data(row, column, Qt::ToolTipRole).toString(); }
    bool isBold(int row)
    {
        const bool name = data(row, 0, Qt::FontRole).value<QFont>().bold();
        EXPECT_EQ(data(row, 1, Qt::FontRole).value<QFont>().bold(), name);
        return name;
    }
};

TEST_F(Rows, AreBoldWhileTheyDifferFromWhatWasLoaded)
{
    choose(0, 2);
    EXPECT_TRUE(isBold(0));
    EXPECT_FALSE(isBold(2));
    EXPECT_EQ(tip(0), "2 : Auto\nRead or loaded: 0 : Off");
    EXPECT_EQ(data(0, 0, Qt::AccessibleDescriptionRole), "Read or loaded: 0 : Off");
    it().history().saved();
    EXPECT_TRUE(isBold(0)) << "it still differs";
    choose(0, 0);
    EXPECT_FALSE(isBold(0));
    EXPECT_EQ(tip(0), "0 : Off");
    it().propItemList[0]->dataList = {"7", "8", "9"};
    byte(20) = 0x01;
    it().history().replaced();
    byte(20) = 0x02;
    EXPECT_EQ(tip(0, 0), "Property 1\nRead or loaded: 1") << "a value without an option";
}

TEST_F(Rows, LookLockedAndSayWhatUnlocksThem)
{
    EXPECT_EQ(tip(1), "0 : Off\nThis Item is Not Editable.  To Change this Item,you should set\n\n"
                      " Master\n(Addr 0x16[4:4])\n\nfrom 0 to 1");
    const auto picture = [this](int row, int column) {
        return m_table.viewport()
            ->grab(m_table.visualRect(m_table.model()->index(row, column)))
            .toImage();
    };
    const auto frame = [&picture](int row) { // its right edge, without text and arrow
        const QImage cell = picture(row, 1);
        return cell.copy(cell.width() - 4, 0, 4, cell.height());
    };
    m_table.clearFocus();
    for (const auto& [ground, text] : {std::pair{Qt::white, Qt::black}, {Qt::black, Qt::white}}) {
        QPalette palette = m_table.palette();
        palette.setColor(QPalette::Base, ground);
        palette.setColor(QPalette::Text, text);
        m_table.setPalette(palette);
        const QColor locked = data(1, 0, Qt::ForegroundRole).value<QBrush>().color();
        EXPECT_GE(contrast(locked, ground), 4.5);
        EXPECT_LT(contrast(locked, ground), 12);
        EXPECT_NE(frame(0), frame(1));
    }
    EXPECT_FALSE(data(0, 0, Qt::ForegroundRole).isValid());
    choose(2, 1);
    EXPECT_FALSE(data(1, 0, Qt::ForegroundRole).isValid());
    EXPECT_EQ(tip(1), "0 : Off");
    EXPECT_EQ(picture(0, 1), picture(1, 1));
}

TEST_F(Rows, AreCopiedByKeyAndDescribedByTheFirst)
{
    const auto click = [this](int row, int column, Qt::KeyboardModifiers keys) {
        QTest::mouseClick(m_table.viewport(), Qt::LeftButton, keys,
                          m_table.visualRect(m_table.model()->index(row, column)).center());
    };
    m_table.setFocus();
    click(2, 0, {});
    click(0, 1, Qt::ControlModifier);
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
    EXPECT_TRUE(m_description.toPlainText().startsWith("(addr:0x14"));
    QTest::keyClick(&m_table, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), "Property 1\t0 : Off\nProperty 3\t0 : Off\n");
    QTest::keyClick(&m_table, Qt::Key_Left); // no modifier is pressed any more
}

TEST_F(Rows, UnderlineTheirByteWhileTheMouseIsOnThem)
{
    it().ShowBinary(3, 5);
    const auto underlined = [this] {
        QString text;
        for (const QTextEdit::ExtraSelection& each : m_hex.extraSelections()) {
            text += each.format.fontUnderline()
                        ? each.cursor.selectedText() + "@" + QString::number(each.cursor.anchor())
                        : QString();
        }
        return text;
    };
    EXPECT_EQ(underlined(), "");
    byte(20) = 0xA7;
    it().ShowBinary(3, 5);
    QTest::mouseMove(m_table.viewport(), m_table.visualRect(m_table.model()->index(0, 0)).center());
    EXPECT_TRUE(QTest::qWaitFor([&] { return underlined() == "A7@75"; }))
        << underlined().toStdString();
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(m_table.viewport(), &leave);
    EXPECT_EQ(underlined(), "");
    EXPECT_EQ(redText(), "09 33 ");
}

} // namespace

} // namespace vornadel::test
