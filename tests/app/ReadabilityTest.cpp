#include "tests/app/FlashPageUnderTest.h"
#include "tests/support/Contrast.h"

#include <QApplication>
#include <QComboBox>
#include <QHeaderView>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QStyle>
#include <QStyleOptionButton>
#include <QStyleOptionComboBox>
#include <QStyleOptionFrame>
#include <QTableView>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <utility>

namespace vornadel::test
{

namespace
{

/// Margins left and right of the text in a QLineEdit, besides the style's frame.
constexpr int kFieldMargin = 2;

std::string nameOf(const QWidget& widget, const QString& text)
{
    return widget.parentWidget()->objectName().toStdString() + "/" +
           widget.objectName().toStdString() + ": " + text.toStdString();
}

void expectFits(const QWidget& widget, const QString& text, const QRect& room)
{
    const QFontMetrics metrics(widget.font());
    const QSize needed = metrics.size(0, text);
    EXPECT_LE(needed.width(), room.width()) << nameOf(widget, text);
    EXPECT_LE(metrics.boundingRect(text).height(), room.height()) << nameOf(widget, text);
}

void expectFits(const QLineEdit& field, const QString& text)
{
    QStyleOptionFrame option;
    option.initFrom(&field);
    option.lineWidth = field.style()->pixelMetric(QStyle::PM_DefaultFrameWidth, &option, &field);
    const QRect room = field.style()->subElementRect(QStyle::SE_LineEditContents, &option, &field);
    expectFits(field, text, room.adjusted(kFieldMargin, 0, -kFieldMargin, 0));
}

class Readability : public ToolUnderTest, public testing::WithParamInterface<bool>
{
protected:
    Readability() { config = configText(GetParam() ? "ScalarMode = 1\n" : ""); }
};

INSTANTIATE_TEST_SUITE_P(Modes, Readability, testing::Bool(),
                         [](const auto& mode) { return mode.param ? "Scalar" : "Normal"; });

TEST_P(Readability, CutsNoButton)
{
    launch();
    for (const QPushButton* button : content()->findChildren<QPushButton*>()) {
        QStyleOptionButton option;
        option.initFrom(button);
        option.text = button->text();
        expectFits(*button, button->text(),
                   button->style()->subElementRect(QStyle::SE_PushButtonContents, &option, button));
    }
}

TEST_P(Readability, CutsNoLabel)
{
    launch();
    for (const QLabel* label : content()->findChildren<QLabel*>()) {
        QRect room = label->contentsRect();
        room.setLeft(room.left() + label->indent());
        const QSize needed = QFontMetrics(label->font()).size(0, label->text());
        EXPECT_LE(needed.width(), room.width()) << nameOf(*label, label->text());
        EXPECT_LE(needed.height(), room.height()) << nameOf(*label, label->text());
    }
}

TEST_P(Readability, CutsNoFieldWithItsLongestText)
{
    launch();
    for (const QLineEdit* id :
         {tool().txtVID_EasyUpdate, tool().txtSSPID_EasyUpdate, tool().txtHSPID_EasyUpdate,
          tool().txtVer_EasyUpdate, tool().txtVID_FwFlash, tool().txtSSPID_FwFlash,
          tool().txtHSPID_FwFlash, tool().txtVer_FwFlash}) {
        for (const char digit : std::string("0123456789ABCDEF")) {
            expectFits(*id, QString(4, QChar(digit)));
        }
    }
    for (const QLineEdit* text :
         {tool().txtManu_EasyUpdate, tool().txtPro_EasyUpdate, tool().txtSN_EasyUpdate,
          tool().txtManu_FwFlash, tool().txtPro_FwFlash, tool().txtSN_FwFlash}) {
        expectFits(*text,
                   "Hub Controllers Example Ltd."); // three texts have 29 characters together
        expectFits(*text, QString(29, '8'));
    }
    expectFits(*tool().txtContainerID_FwFlash, "{00112233-4455-6677-8899-aabbccddeeff}");
    expectFits(*tool().txtContainerID_FwFlash, "{dddddddd-dddd-dddd-dddd-dddddddddddd}");
}

TEST_P(Readability, CutsNoDropDownText)
{
    launch();
    for (const QComboBox* combo : {tool().cbPages, tool().cbICType}) {
        QStyleOptionComboBox option;
        option.initFrom(combo);
        option.editable = false;
        const QRect room = combo->style()->subControlRect(QStyle::CC_ComboBox, &option,
                                                          QStyle::SC_ComboBoxEditField, combo);
        for (const char* page :
             {"SSC", "DSP OCP/U1/U2", "System", "USP PHY", "DSP Setting", "DSP PHY"}) {
            expectFits(*combo, page, room);
        }
    }
}

TEST_P(Readability, CutsNoTableHeader)
{
    launch();
    const QTableView& table = *tool().tbProperties_Detail;
    const QHeaderView& header = *table.horizontalHeader();
    int width = 0;
    for (int column = 0; column < 2; ++column) {
        const int margin = header.style()->pixelMetric(QStyle::PM_HeaderMargin, nullptr, &header);
        const QString text = table.model()->headerData(column, Qt::Horizontal).toString();
        expectFits(header, text,
                   QRect(0, 0, header.sectionSize(column) - 2 * margin, header.height()));
        width += header.sectionSize(column);
    }
    EXPECT_LE(width, table.width());
}

/// The width from the first to the last column with pixels in the title's band; 0 if it is empty.
int inkWidth(TitledBox& box)
{
    const QImage image =
        box.grab(QRect(2, 4, box.width() - 4, TitledBox::kTitleHeight - 8)).toImage();
    const QColor ground = image.pixelColor(image.width() - 3, image.height() / 2);
    int first = image.width();
    int last = 0;
    for (int x = 0; x < image.width(); ++x) {
        for (int y = 0; y < image.height(); ++y) {
            if (std::abs(image.pixelColor(x, y).lightness() - ground.lightness()) > 60) {
                first = std::min(first, x);
                last = std::max(last, x);
            }
        }
    }
    return std::max(0, last - first + 1);
}

TEST_P(Readability, DrawsEveryBoxTitleWhole)
{
    launch();
    for (TitledBox* box : {tool().boxHelp, tool().boxScalar, tool().boxUpdate, tool().boxEasyUpdate,
                           tool().boxFwFlash, tool().boxDetail}) {
        const int needed = QFontMetrics(box->font()).horizontalAdvance(box->title());
        EXPECT_LE(needed, box->width() - 16) << box->title().toStdString();
        // Without its "&" the title would be narrower.
        EXPECT_NEAR(inkWidth(*box), needed, 5) << box->title().toStdString();
    }
}

TEST_P(Readability, KeepsTheBorderOfEveryBoxWhole)
{
    launch();
    for (TitledBox* box : {tool().boxHelp, tool().boxScalar, tool().boxUpdate, tool().boxEasyUpdate,
                           tool().boxFwFlash, tool().boxDetail}) {
        const QImage image = box->grab().toImage();
        const int right = image.width() - 1;
        const int bottom = image.height() - 1;
        const QRgb expected = box->borderColor().rgb();
        int broken = 0;
        for (int y = 0; y <= bottom; ++y) {
            broken += image.pixel(0, y) != expected ? 1 : 0;
            broken += image.pixel(right, y) != expected ? 1 : 0;
        }
        for (int x = 0; x <= right; ++x) {
            broken += image.pixel(x, 0) != expected ? 1 : 0;
            broken += image.pixel(x, bottom) != expected ? 1 : 0;
        }
        EXPECT_EQ(broken, 0) << box->objectName().toStdString();
        EXPECT_NE(image.pixel(right - 3, bottom / 2), expected) << "the border is a line";
    }
}

TEST_P(Readability, HasRoomForEightProperties)
{
    launch();
    const QTableView& table = *tool().tbProperties_Detail;
    EXPECT_GE(table.viewport()->height(), 8 * table.verticalHeader()->defaultSectionSize());
}

using Cells = FlashPageUnderTest;

TEST_F(Cells, ShowLettersInTheirWholeHeight)
{
    read();
    const auto picture = [this](int position) {
        choose(2, position);
        settleEvents();
        return tool().tbProperties_Detail->viewport()->grab().toImage();
    };
    const QImage low = picture(1);  // "1 : Low"
    const QImage high = picture(3); // "3 : High"
    const QRect cell =
        tool().tbProperties_Detail->visualRect(tool().tbProperties_Detail->model()->index(2, 1));
    int rows = 0;
    for (int y = cell.top(); y <= cell.bottom(); ++y) {
        for (int x = cell.left(); x <= cell.right(); ++x) {
            if (low.pixel(x, y) != high.pixel(x, y)) {
                ++rows;
                break;
            }
        }
    }
    EXPECT_GE(rows,
              QFontMetrics(tool().tbProperties_Detail->font()).tightBoundingRect("High").height());
}

TEST_P(Readability, LeavesOutTheMiddleOfAType)
{
    launch();
    const auto picture = [this](const QString& type) {
        tool().cbICType->clear();
        tool().cbICType->addItem(type);
        EXPECT_EQ(tool().cbICType->toolTip(), type);
        return tool().cbICType->grab().toImage();
    };
    const QString longName = "a folder with a long name/and another/controller ";
    const QImage first = picture(longName + "1.INI");
    EXPECT_NE(picture(longName + "2.INI"), first);
    EXPECT_NE(picture("A" + longName.mid(1) + "1.INI"), first);
}

TEST_P(Readability, ShowsEveryDetectionWithoutScrolling)
{
    launch();
    TextView& view = *tool().nstfHubInfo_UpdateFW;
    for (const char* text :
         {"Detect Zel Hub: Fail\nPlease Insert Zel Hub Device",
          "Detect Zel Hub : Success\nfwVer:dddd", "Detect Zel Hub : Success\n-need load driver"}) {
        view.setPlainText(text);
        settleEvents();
        EXPECT_FALSE(view.verticalScrollBar()->isVisible()) << text;
        EXPECT_LE(QFontMetrics(view.font()).size(0, text).width(), view.viewport()->width())
            << text;
    }
}

/// Changes the program's palette while it lives.
class ProgramPalette
{
public:
    ProgramPalette(const QColor& base, const QColor& text) : m_before(QApplication::palette())
    {
        QPalette palette = m_before;
        for (const auto role :
             {QPalette::Base, QPalette::Window, QPalette::Button, QPalette::AlternateBase}) {
            palette.setColor(role, base);
        }
        for (const auto role : {QPalette::Text, QPalette::WindowText, QPalette::ButtonText}) {
            palette.setColor(role, text);
        }
        QApplication::setPalette(palette);
        settleEvents();
    }
    ProgramPalette(const ProgramPalette&) = delete;
    ProgramPalette& operator=(const ProgramPalette&) = delete;
    ~ProgramPalette()
    {
        QApplication::setPalette(m_before);
        settleEvents();
    }

private:
    QPalette m_before;
};

const std::pair<QColor, QColor> kGrounds[] = {
    {Qt::white, Qt::black},
    {QColor(0xD0, 0xD0, 0xD0), Qt::black},
    {QColor(0x40, 0x40, 0x40), Qt::white},
    {Qt::black, Qt::white},
};

void expectReadable(const TextView& view, int hue)
{
    const QColor ground = view.palette().color(QPalette::Base);
    EXPECT_EQ(hueOf(view), hue) << ground.name().toStdString();
    EXPECT_GE(contrast(view.palette().color(QPalette::Text), ground), 4.5)
        << ground.name().toStdString();
}

using Colours = ToolUnderTest;

/// The ground of a field, beside its text.
QColor groundOf(QWidget& field)
{
    const QImage image = field.grab().toImage();
    return image.pixelColor(image.width() - 6, image.height() / 2);
}

TEST_F(Colours, TellReadOnlyFieldsFromTheOthers)
{
    launchAndSettle();
    for (const auto& [ground, text] : kGrounds) {
        const ProgramPalette palette(ground, text);
        for (QWidget* field : {static_cast<QWidget*>(tool().txtVer_FwFlash),
                               static_cast<QWidget*>(tool().txtManu_EasyUpdate),
                               static_cast<QWidget*>(tool().nstfHubInfo_UpdateFW)}) {
            const QColor seen = groundOf(*field);
            EXPECT_GE(std::abs(seen.lightness() - groundOf(*tool().txtManu_FwFlash).lightness()),
                      10)
                << field->objectName().toStdString() << " on " << ground.name().toStdString();
            EXPECT_GE(contrast(text, seen), 4.5);
        }
    }
}

TEST_F(Colours, FollowThePaletteReadablyAndKeepTheirHue)
{
    launchAndSettle();
    for (const auto& [ground, text] : kGrounds) {
        const ProgramPalette palette(ground, text);
        const TextView& progress = *tool().nstfUpdateInfo_UpdateFW;
        EXPECT_EQ(progress.palette().color(QPalette::Base), ground);
        expectReadable(progress, kRedHue); // what was shown before the change
        expectReadable(*tool().nstfHubInfo_UpdateFW, kBlueHue);
        tool().appendProgressInfo_Blue("Step\n");
        expectReadable(progress, kBlueHue);
        tool().appendProgressInfo_Red("Fail\n");
        expectReadable(progress, kRedHue);
    }
}

} // namespace

} // namespace vornadel::test
