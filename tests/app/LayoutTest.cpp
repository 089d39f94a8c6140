#include "tests/app/ToolUnderTest.h"

#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTableView>
#include <QTest>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iterator>
#include <map>
#include <ostream>
#include <string>

namespace vornadel::test
{

namespace
{

struct Rect {
    double x, y, width, height; // points, origin in the lower left corner of the parent
};

bool operator==(const Rect& a, const Rect& b)
{
    return a.x == b.x && std::abs(a.y - b.y) <= 0.5 && a.width == b.width && a.height == b.height;
}

std::ostream& operator<<(std::ostream& out, const Rect& rect)
{
    return out << rect.x << ", " << rect.y << ", " << rect.width << ", " << rect.height;
}

Rect rectOf(const QWidget& widget)
{
    return {static_cast<double>(widget.x()),
            static_cast<double>(widget.parentWidget()->height() - widget.y() - widget.height()),
            static_cast<double>(widget.width()), static_cast<double>(widget.height())};
}

using Get = QWidget* (*)(const WindowControls&);

struct Control {
    const char* name;
    Get get;
    const char* parent; // a box
    const char* text;   // of a button; null elsewhere
    Rect frame;
};

#define CONTROL(name) #name, [](const WindowControls& c) -> QWidget* { return c.name; }

// clang-format off: a table
const Control kControls[] = {
    {CONTROL(nsbtnLoadDriver_HelpBox), "boxHelp", "LoadUpdateDriver", {0, 115, 130, 20}},
    {CONTROL(nsbtnUnloadDriver_HelpBox), "boxHelp", "UnloadUpdateDriver", {175, 115, 130, 20}},
    {CONTROL(btnGetLog_HelpBox), "boxHelp", "Get Log", {230, 0, 70, 20}},
    {CONTROL(nstextfd_Scalar), "boxScalar", nullptr, {0, 35, 300, 20}},
    {CONTROL(nsbtnSelect_Scalar), "boxScalar", "..", {305, 35, 30, 20}},
    {CONTROL(nsbtnUpdate_Scalar), "boxScalar", "ScalarUpdate", {230, 5, 100, 20}},
    {CONTROL(nstfHubInfo_UpdateFW), "boxUpdate", nullptr, {0, 255, 335, 60}},
    {CONTROL(nstfUpdateInfo_UpdateFW), "boxUpdate", nullptr, {0, 35, 335, 190}},
    {CONTROL(slider), "boxUpdate", nullptr, {0, 0, 330, 20}},
    {CONTROL(txtVID_EasyUpdate), "boxEasyUpdate", nullptr, {29, 220, 50, 20}},
    {CONTROL(txtSSPID_EasyUpdate), "boxEasyUpdate", nullptr, {143, 220, 50, 20}},
    {CONTROL(txtHSPID_EasyUpdate), "boxEasyUpdate", nullptr, {243, 220, 50, 20}},
    {CONTROL(txtVer_EasyUpdate), "boxEasyUpdate", nullptr, {273, 190, 50, 20}},
    {CONTROL(txtManu_EasyUpdate), "boxEasyUpdate", nullptr, {103, 160, 200, 20}},
    {CONTROL(txtPro_EasyUpdate), "boxEasyUpdate", nullptr, {103, 130, 200, 20}},
    {CONTROL(txtSN_EasyUpdate), "boxEasyUpdate", nullptr, {103, 100, 200, 20}},
    {CONTROL(txtFw_EasyUpdate), "boxEasyUpdate", nullptr, {0, 30, 300, 20}},
    {CONTROL(btnSelect_EasyUpdate), "boxEasyUpdate", "...", {303, 30, 30, 20}},
    {CONTROL(btnUpdate_EasyUpdate), "boxEasyUpdate", "Update", {250, 0, 70, 20}},
    {CONTROL(txtVID_FwFlash), "boxFwFlash", nullptr, {29, 220, 44, 20}},
    {CONTROL(txtSSPID_FwFlash), "boxFwFlash", nullptr, {143, 220, 44, 20}},
    {CONTROL(txtHSPID_FwFlash), "boxFwFlash", nullptr, {243, 220, 44, 20}},
    {CONTROL(txtVer_FwFlash), "boxFwFlash", nullptr, {273, 197, 44, 20}},
    {CONTROL(txtManu_FwFlash), "boxFwFlash", nullptr, {103, 175, 200, 20}},
    {CONTROL(txtPro_FwFlash), "boxFwFlash", nullptr, {103, 150, 200, 20}},
    {CONTROL(txtSN_FwFlash), "boxFwFlash", nullptr, {103, 125, 200, 20}},
    {CONTROL(txtContainerID_FwFlash), "boxFwFlash", nullptr, {0, 80, 303, 20}},
    {CONTROL(btnRead_FwFlash), "boxFwFlash", "Read From Flash", {10, 50, 130, 20}},
    {CONTROL(btnLoad_FwFlash), "boxFwFlash", "Load From *.bin", {10, 25, 130, 20}},
    {CONTROL(btnErase_FwFlash), "boxFwFlash", "Erase Flash", {10, 0, 130, 20}},
    {CONTROL(btnSave_FwFlash), "boxFwFlash", "Save to *.bin", {200, 37.5, 120, 20}},
    {CONTROL(lblUnsaved_FwFlash), "boxFwFlash", nullptr, {325, 37.5, 20, 20}},
    {CONTROL(txtFind_Detail), "boxDetail", nullptr, {0, 588, 220, 25}},
    {CONTROL(cbPages), "boxDetail", nullptr, {70, 547, 150, 25}},
    {CONTROL(cbICType), "boxDetail", nullptr, {280, 588, 150, 25}},
    {CONTROL(tbProperties_Detail), "boxDetail", nullptr, {0, 362, 440, 180}},
    {CONTROL(txtViewDesc_Detail), "boxDetail", nullptr, {0, 200, 450, 140}},
    {CONTROL(txtViewBin_Detail), "boxDetail", nullptr, {0, 0, 450, 175}},
};

struct BoxEntry {
    const char* name;
    Get get;
    const char* title;
    Rect frame;
    bool inNormalMode;
    bool inScalarMode;
};

const BoxEntry kBoxes[] = {
    {CONTROL(boxHelp), "Help Box", {0, 15, 350, 160}, true, true},
    {CONTROL(boxScalar), "Scalar Update", {0, 185, 350, 90}, false, true},
    {CONTROL(boxUpdate), "Update Firmware Box", {0, 290, 350, 365}, true, true},
    {CONTROL(boxEasyUpdate),
     "Easy Updae Firmware Form *.bin file",
     {360, 15, 350, 270},
     true,
     false},
    {CONTROL(boxFwFlash),
     "FirmWare From Flash & Detail Config ->",
     {360, 360, 350, 270},
     true,
     false},
    {CONTROL(boxDetail),
     "FirmWare From Flash & Detail Config ->",
     {720, 15, 450, 637},
     true,
     false},
};

struct LabelEntry {
    const char* parent;
    const char* text;
    Rect frame;
};

const LabelEntry kLabels[] = {
    {"boxHelp",
     "Step1: Click \"LoadUpdateDriver\" to Load Driver\nStep2: repluginhub device,let new Driver "
     "work.\n"
     "Step3: Click \"Update\" to update fw\nStep4: Click \"UnloadUpdateDriver\" to recover",
     {0, 25, 350, 85}},
    {"boxUpdate", "Detect Hub Info", {0, 315, 110, 20}},
    {"boxUpdate", "Update FW Info", {0, 225, 110, 20}},
    {"boxEasyUpdate", "VID", {0, 220, 30, 20}},
    {"boxEasyUpdate", "SSPID", {100, 220, 50, 20}},
    {"boxEasyUpdate", "HSPID", {200, 220, 50, 20}},
    {"boxEasyUpdate", "ver", {250, 190, 30, 20}},
    {"boxEasyUpdate", "Manufacturer", {0, 160, 100, 20}},
    {"boxEasyUpdate", "Product", {0, 130, 100, 20}},
    {"boxEasyUpdate", "Serial Number", {0, 100, 100, 20}},
    {"boxFwFlash", "VID", {0, 220, 30, 20}},
    {"boxFwFlash", "SSPID", {100, 220, 50, 20}},
    {"boxFwFlash", "HSPID", {200, 220, 50, 20}},
    {"boxFwFlash", "ver", {250, 200, 30, 20}},
    {"boxFwFlash", "Manufacturer", {0, 175, 100, 20}},
    {"boxFwFlash", "Product", {0, 150, 100, 20}},
    {"boxFwFlash", "Serial Number", {0, 125, 100, 20}},
    {"boxFwFlash", "Container ID", {0, 100, 100, 20}},
    {"boxDetail", "PageName", {0, 550, 80, 20}},
    {"boxDetail", "ICType", {230, 590, 60, 20}},
    {"boxDetail", "Description", {0, 340, 110, 20}},
    {"boxDetail", "Binary Data", {0, 175, 110, 20}},
};
// clang-format on

#undef CONTROL

using Window = ToolUnderTest;

class Layout : public ToolUnderTest, public testing::WithParamInterface<bool>
{
protected:
    Layout() { config = configText(scalar() ? "ScalarMode = 1\n" : "ScalarMode = 2\n"); }
    static bool scalar() { return GetParam(); }
};

INSTANTIATE_TEST_SUITE_P(Modes, Layout, testing::Bool(),
                         [](const auto& mode) { return mode.param ? "Scalar" : "Normal"; });

TEST_P(Layout, PutsEveryBoxInItsPlace)
{
    launch();
    ASSERT_EQ(content()->size(), scalar() ? QSize(360, 670) : QSize(1200, 660));
    for (const BoxEntry& entry : kBoxes) {
        const auto* box = dynamic_cast<const TitledBox*>(entry.get(tool()));
        ASSERT_NE(box, nullptr) << entry.name;
        EXPECT_EQ(box->parentWidget(), content());
        EXPECT_EQ(box->objectName(), entry.name);
        EXPECT_EQ(box->title(), entry.title);
        EXPECT_EQ(rectOf(*box), entry.frame) << entry.name;
        EXPECT_EQ(box->isVisible(), scalar() ? entry.inScalarMode : entry.inNormalMode)
            << entry.name;
    }
    EXPECT_EQ(content()->findChildren<QFrame*>(QString(), Qt::FindDirectChildrenOnly).size(),
              static_cast<qsizetype>(std::size(kBoxes)));
}

TEST_P(Layout, PutsEveryControlInItsPlace)
{
    launch();
    for (const Control& entry : kControls) {
        const QWidget* widget = entry.get(tool());
        ASSERT_NE(widget, nullptr) << entry.name;
        EXPECT_EQ(widget->objectName(), entry.name);
        EXPECT_EQ(widget->parentWidget()->objectName(), entry.parent) << entry.name;
        EXPECT_EQ(rectOf(*widget), entry.frame) << entry.name;
        if (entry.text != nullptr) {
            const auto* button = qobject_cast<const QPushButton*>(widget);
            ASSERT_NE(button, nullptr) << entry.name;
            EXPECT_EQ(button->text(), entry.text);
        }
    }
    EXPECT_EQ(content()->findChildren<QPushButton*>().size(), 11);
    EXPECT_EQ(tool().slider->minimum(), 0);
    EXPECT_EQ(tool().slider->maximum(), 100);
    EXPECT_EQ(tool().slider->orientation(), Qt::Horizontal);
}

TEST_P(Layout, PutsEveryLabelInItsPlace)
{
    launch();
    qsizetype found = 1; // the mark of unsaved edits, which is a control
    for (const LabelEntry& entry : kLabels) {
        bool there = false;
        for (const QLabel* label :
             content()->findChild<QWidget*>(entry.parent)->findChildren<QLabel*>()) {
            there |= label->text() == entry.text && rectOf(*label) == entry.frame;
        }
        EXPECT_TRUE(there) << entry.parent << ": " << entry.text;
        ++found;
    }
    EXPECT_EQ(content()->findChildren<QLabel*>().size(), found);
}

TEST_P(Layout, HoldsWhatIsHighestAndWidestInEveryBox)
{
    launch();
    for (const BoxEntry& entry : kBoxes) {
        const auto* box = dynamic_cast<const TitledBox*>(entry.get(tool()));
        for (const QWidget* child :
             box->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
            EXPECT_TRUE(box->rect().contains(child->geometry())) << entry.name;
            EXPECT_GE(child->y(), TitledBox::kTitleHeight) << entry.name << " covers its title";
        }
    }
}

TEST_P(Layout, HasOneSize)
{
    launch();
    const QSize size = content()->size();
    QWidget* window = tool().window();
    EXPECT_EQ(window->size(), size);
    EXPECT_EQ(window->minimumSize(), size);
    EXPECT_EQ(window->maximumSize(), size);
    window->resize(300, 300);
    settleEvents();
    EXPECT_EQ(window->size(), size);
    const auto* area = qobject_cast<QScrollArea*>(window);
    EXPECT_FALSE(area->horizontalScrollBar()->isVisible());
    EXPECT_FALSE(area->verticalScrollBar()->isVisible());
}

TEST_F(Window, WritesInHelvetica)
{
    launch();
    const std::map<const TextView*, int> sizes = {{tool().nstfUpdateInfo_UpdateFW, 12},
                                                  {tool().nstfHubInfo_UpdateFW, 12},
                                                  {tool().txtViewDesc_Detail, 14},
                                                  {tool().txtViewBin_Detail, 14}};
    for (const auto& [view, size] : sizes) {
        EXPECT_EQ(view->font().family(), "Helvetica");
        EXPECT_EQ(view->font().pixelSize(), size) << view->objectName().toStdString();
    }
}

TEST_F(Window, WrapsTheProgressTextAndScrollsItUpAndDownAlone)
{
    launchAndSettle();
    TextView& view = *tool().nstfUpdateInfo_UpdateFW;
    EXPECT_FALSE(view.verticalScrollBar()->isVisible());
    tool().resetProgressInfo();
    tool().appendProgressInfo_Blue(QString("/a path of many parts").repeated(60) +
                                   QString("\n").repeated(20));
    settleEvents();
    EXPECT_FALSE(view.horizontalScrollBar()->isVisible());
    EXPECT_EQ(view.horizontalScrollBar()->maximum(), 0);
    EXPECT_TRUE(view.verticalScrollBar()->isVisible());
}

TEST_F(Window, DrawsABlueBorderAroundTheHelp)
{
    launch();
    const QImage help = tool().boxHelp->grab().toImage();
    const QImage other = tool().boxUpdate->grab().toImage();
    const QColor border = help.pixelColor(0, help.height() / 2);
    const QColor plain = other.pixelColor(0, other.height() / 2);
    EXPECT_GT(border.blue(), border.red() + 60);
    EXPECT_LT(std::abs(plain.blue() - plain.red()), 60);
}

TEST_F(Window, LetsNobodyTypeIntoWhatIsReadOnly)
{
    launchAndSettle();
    static constexpr QLineEdit* WindowControls::*kEditable[] = {
        &WindowControls::txtVID_FwFlash,        &WindowControls::txtSSPID_FwFlash,
        &WindowControls::txtHSPID_FwFlash,      &WindowControls::txtManu_FwFlash,
        &WindowControls::txtPro_FwFlash,        &WindowControls::txtSN_FwFlash,
        &WindowControls::txtContainerID_FwFlash};
    const auto isEditable = [this](const QLineEdit* field) {
        return std::any_of(std::begin(kEditable), std::end(kEditable),
                           [&](auto member) { return tool().*member == field; });
    };
    auto fields = content()->findChildren<QLineEdit*>();
    EXPECT_EQ(fields.removeAll(tool().txtFind_Detail), 1); // shows nothing of an image
    EXPECT_EQ(fields.size(), 17);
    for (QLineEdit* field : fields) {
        QSignalSpy typed(field, &QLineEdit::textEdited);
        if (isEditable(field)) {
            // Without an image, typed text is noticed, refused and removed.
            runAndUse([field] { QTest::keyClicks(field, "1"); },
                      [](QDialog& alert) { QTest::keyClick(&alert, Qt::Key_Return); });
            EXPECT_EQ(typed.count(), 1) << field->objectName().toStdString();
            EXPECT_EQ(field->text(), "") << field->objectName().toStdString();
        } else {
            const QString before = field->text();
            QTest::keyClicks(field, "12ab");
            EXPECT_EQ(field->text(), before) << field->objectName().toStdString();
            EXPECT_EQ(typed.count(), 0) << field->objectName().toStdString();
        }
    }
    for (QPlainTextEdit* view : content()->findChildren<QPlainTextEdit*>()) {
        const QString before = view->toPlainText();
        QTest::keyClicks(view, "12ab");
        QTest::keyClick(view, Qt::Key_Backspace);
        EXPECT_EQ(view->toPlainText(), before) << view->objectName().toStdString();
    }
}

TEST_F(Window, LetsTheChosenPathsBeSelectedButNotTheHelp)
{
    launchAndSettle();
    tool().txtFw_EasyUpdate->setText("a.bin");
    QTest::keyClick(tool().txtFw_EasyUpdate, Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(tool().txtFw_EasyUpdate->selectedText(), "a.bin");
    tool().nstextfd_Scalar->setText("b.bin");
    QTest::keyClick(tool().nstextfd_Scalar, Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(tool().nstextfd_Scalar->selectedText(), "b.bin");
    const QLabel* help = tool().boxHelp->findChild<QLabel*>();
    EXPECT_FALSE(help->textInteractionFlags() &
                 (Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard));
    EXPECT_FALSE(help->textInteractionFlags() & Qt::TextEditable);
}

} // namespace

} // namespace vornadel::test
