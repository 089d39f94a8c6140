#include "editor/HexText.h"
#include "editor/Tone.h"
#include "tests/editor/PropertyPage.h"
#include "tests/support/Contrast.h"

#include <QScrollBar>

#include <limits>

namespace vornadel::test
{

namespace
{

constexpr std::uint32_t kFar = std::numeric_limits<std::uint32_t>::max();

class HexView : public PropertyPage
{
protected:
    void SetUp() override { load(); }
};

TEST_F(HexView, ShowsSixteenLinesLabelledWithImageOffsets)
{
    it().ShowBinary(0, 0);
    const QStringList lines = m_hex.toPlainText().split('\n');
    ASSERT_EQ(lines.size(), 17);
    EXPECT_EQ(lines[0], "0100h:55 AA 12 09 33 00 22 01 - 00 00 00 00 00 00 00 00 ");
    EXPECT_EQ(lines[2], "0120h:00 00 00 00 00 00 00 00 - 00 00 00 07 03 4D 61 6B ");
    EXPECT_EQ(lines[15], "01F0h:00 00 00 00 00 00 00 00 - 00 00 00 00 00 00 00 00 ");
    EXPECT_EQ(lines[16], "");
    EXPECT_EQ(m_hex.toPlainText().size(), 16 * 57);
}

struct RangeCase {
    std::uint32_t begin, end;
    const char* red;
    qsizetype start;
};

TEST_F(HexView, ColoursFromTheFirstToTheLastDigit)
{
    const RangeCase kCases[] = {
        {2, 8, "12 09 33 00 22 01 - ", 6 + 3 * 2},
        {8, 2, "12 09 33 00 22 01 - ", 6 + 3 * 2}, // either order
        {1, 2, "AA ", 6 + 3},
        {7, 8, "01 - ", 6 + 3 * 7},
        {8, 9, "00 ", 6 + 3 * 8 + 2},
        {15, 16, "00 \n0110h:", 6 + 3 * 15 + 2},
        {255, 256, "00 \n", 15 * 57 + 6 + 3 * 15 + 2},
        {254, 1000, "00 00 \n", 15 * 57 + 6 + 3 * 14 + 2},
        {255, kFar, "00 \n", 15 * 57 + 6 + 3 * 15 + 2},
    };
    for (const RangeCase& each : kCases) {
        it().ShowBinary(each.begin, each.end);
        EXPECT_EQ(redText(), each.red) << each.begin;
        EXPECT_EQ(redStart(), each.start) << each.begin;
    }
}

TEST_F(HexView, ColoursNothingInAnEmptyRangeOrBehindTheBlock)
{
    for (const auto& [begin, end] :
         {std::pair{0U, 0U}, {100U, 100U}, {256U, 257U}, {kFar, 400U}, {kFar, kFar}}) {
        it().ShowBinary(3, 5);
        EXPECT_EQ(redText(), "09 33 ");
        it().ShowBinary(begin, end);
        EXPECT_EQ(redText(), "") << begin;
    }
}

TEST_F(HexView, KeepsItsMarksBesideLabelsOfFiveDigits)
{
    ASSERT_TRUE(parse(m_image, imageWithBlock(0x10100, 0x10000)));
    it().ShowBinary(16, 18);
    EXPECT_TRUE(m_hex.toPlainText().startsWith("10000h:55 AA "));
    EXPECT_EQ(redText(), "00 00 ");
    EXPECT_EQ(redStart(), 58 + 7);
}

TEST_F(HexView, KeepsItsTextWithoutAnImage)
{
    FwImage_Release(m_image);
    m_hex.setPlainText("before");
    m_log.clear();
    it().ShowBinary(3, 4);
    EXPECT_EQ(m_hex.toPlainText(), "before");
    EXPECT_EQ(m_log, QStringList{"offsetBegin :3   ;   noffsetEnd :4\n"});
}

TEST_F(HexView, ScrollsToTheRedBytesAndToTheTopWithoutAny)
{
    m_hex.resize(450, 100);
    m_hex.show();
    QApplication::processEvents();
    const auto isVisible = [this](qsizetype position) {
        QTextCursor cursor(m_hex.document());
        cursor.setPosition(static_cast<int>(position));
        return m_hex.viewport()->rect().contains(m_hex.cursorRect(cursor).center());
    };
    EXPECT_FALSE((it().ShowBinary(0, 0), isVisible(15 * 57 + 6)));
    it().ShowBinary(250, 252);
    EXPECT_TRUE(isVisible(redStart()));
    EXPECT_GT(m_hex.verticalScrollBar()->value(), 0);
    it().ShowBinary(0x75, 0x84);
    EXPECT_TRUE(isVisible(redStart()));
    EXPECT_TRUE(isVisible(redStart() + redText().size()));
    it().ShowBinary(200, 200);
    EXPECT_EQ(m_hex.verticalScrollBar()->value(), 0);
}

TEST_F(HexView, LeavesAllElseInTheTextColourOfTheView)
{
    it().ShowBinary(3, 5);
    ASSERT_EQ(m_hex.extraSelections().size(), 1);
    EXPECT_EQ(redText(), "09 33 ");
    EXPECT_EQ(m_hex.palette().color(QPalette::Text), m_description.palette().color(QPalette::Text));
    QTextCursor all(m_hex.document());
    all.select(QTextCursor::Document);
    EXPECT_EQ(all.charFormat().foreground().style(), Qt::NoBrush);
}

TEST_F(HexView, HasARedThatCanBeReadOnAnyGround)
{
    it().ShowBinary(3, 4);
    for (const QColor& ground :
         {QColor(Qt::white), QColor(0xD0, 0xD0, 0xD0), QColor(0x40, 0x40, 0x40),
          QColor(0x1B, 0x1E, 0x20), QColor(Qt::black)}) {
        QPalette palette = m_hex.palette();
        palette.setColor(QPalette::Base, ground);
        m_hex.setPalette(palette); // with the text on show
        const QColor red = m_hex.extraSelections().at(0).format.foreground().color();
        EXPECT_EQ(red.hslHue(), 0) << ground.name().toStdString();
        EXPECT_GE(contrast(red, ground), 4.5) << ground.name().toStdString();
    }
    EXPECT_EQ(redText(), "09 ");
}

} // namespace

} // namespace vornadel::test
