// Builds the one window from its tables.

#include "app/AppDelegate.h"
#include "app/Controls.h"
#include "app/FileNames.h"
#include "app/FocusHolder.h"
#include "app/Manual.h"
#include "app/ScreenFit.h"
#include "app/TypedField.h"
#include "app/WindowTables.h"
#include "config/Version.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QShortcut>
#include <QTableView>

#include <cmath>
#include <functional>

namespace vornadel
{

namespace
{

using namespace layout;

constexpr int kPropertyRowHeight = 19; // eight rows fit below the header

/// The only place that converts frames to widget coordinates, with their origin at the upper left.
void place(QWidget* widget, const Frame& frame)
{
    const double top = widget->parentWidget()->height() - frame.y - frame.height;
    widget->setGeometry(static_cast<int>(frame.x), static_cast<int>(std::lround(top)),
                        static_cast<int>(frame.width), static_cast<int>(frame.height));
}

/// A "&" in a title is a character, not a mnemonic.
QString literal(const char* title) { return QString(title).replace("&", "&&"); }

QFont helvetica(int points)
{
    QFont font("Helvetica");
    font.setPixelSize(points); // one point is one device-independent pixel here
    return font;
}

/// Sets the widget's frame, its object name (the member's) and its name for screen readers.
void nameAndPlace(QWidget* widget, const char* name, const char* accessibleName, const Frame& frame)
{
    widget->setObjectName(name);
    widget->setAccessibleName(accessibleName);
    place(widget, frame);
}

void buildBoxes(WindowControls& controls, QWidget* content)
{
    for (const BoxRow& row : kBoxes) {
        auto* box = new TitledBox(row.title, content);
        nameAndPlace(box, row.name, row.title, row.frame);
        controls.*row.member = box;
    }
    controls.boxHelp->setBorderTone(Tone::Blue);
    for (const LabelRow& row : kLabels) {
        auto* label = new QLabel(controls.*row.box);
        label->setTextFormat(Qt::PlainText);
        label->setText(row.text);
        label->setAlignment(Qt::AlignLeft |
                            (row.frame.height > 20 ? Qt::AlignTop : Qt::AlignVCenter));
        label->setIndent(4);
        place(label, row.frame);
    }
}

void buildFields(WindowControls& controls)
{
    for (const FieldRow& row : kFields) {
        QWidget* const box = controls.*row.box;
        QLineEdit* field = nullptr;
        if (row.editable) {
            field = new TypedField(box);
        } else {
            field = new ReadOnlyField(box);
        }
        nameAndPlace(field, row.name, row.accessibleName, row.frame);
        field->setAccessibleDescription((controls.*row.box)->title()); // two boxes have a "VID"
        controls.*row.member = field;
    }
}

/// A shortcut that does nothing while `widget` is disabled or hidden.
void addShortcut(const QKeySequence& keys, QWidget* widget, const std::function<void()>& action)
{
    auto* const shortcut = new QShortcut(keys, widget, action);
    shortcut->setAutoRepeat(false);
}

/// All shortcuts in this mode, a line each.
QString shortcutList(const WindowControls& controls)
{
    QStringList lines;
    const auto add = [&](Box box, const char* keys, const char* what) {
        if (*keys == '\0' || (controls.*box)->isHidden()) {
            return;
        }
        lines += QKeySequence(keys).toString(QKeySequence::NativeText) + ": " + what;
    };
    for (const ButtonRow& row : kButtons) {
        add(row.box, row.shortcut, row.label);
    }
    for (const ShortcutRow& row : kMoreShortcuts) {
        add(row.box, row.keys, row.what);
    }
    return lines.join('\n');
}

void buildButtons(AppDelegate& delegate)
{
    for (const ButtonRow& row : kButtons) {
        auto* button = new ActionButton(literal(row.label), delegate.*row.box);
        nameAndPlace(button, row.name, row.label, row.frame);
        QString description = row.description;
        if (const QKeySequence keys(row.shortcut); !keys.isEmpty()) {
            description += " (" + keys.toString(QKeySequence::NativeText) + ")";
            addShortcut(keys, button, [button] { button->click(); });
        }
        button->setAccessibleDescription(description);
        button->setToolTip(description);
        delegate.*row.member = button;
        const Action action = row.action;
        QObject::connect(button, &QPushButton::clicked, &delegate,
                         [&delegate, action] { action(delegate); });
    }
}

void buildUnsavedMark(WindowControls& controls)
{
    auto* mark = new QLabel(QString(QChar(0x25CF)), controls.boxFwFlash); // a black circle
    nameAndPlace(mark, "lblUnsaved_FwFlash", "", {325, 37.5, 20, 20});
    controls.lblUnsaved_FwFlash = mark;
}

void buildTexts(WindowControls& controls)
{
    for (const TextRow& row : kTexts) {
        auto* text = new TextView(controls.*row.box);
        text->setFont(helvetica(row.fontSize));
        nameAndPlace(text, row.name, row.accessibleName, row.frame);
        controls.*row.member = text;
    }
    controls.nstfHubInfo_UpdateFW->showAsField();
    controls.slider = new ProgressSlider(controls.boxUpdate);
    nameAndPlace(controls.slider, "slider", "Progress", {0, 0, 330, 20});
}

QLabel* labelOf(const QWidget* box, const char* text)
{
    for (QLabel* label : box->findChildren<QLabel*>()) {
        if (label->text() == text) {
            return label;
        }
    }
    return nullptr;
}

void buildPropertyEditor(WindowControls& controls)
{
    for (const ComboRow& row : kCombos) {
        auto* combo = new PickList(controls.boxDetail);
        nameAndPlace(combo, row.name, row.label, row.frame);
        combo->setAccessibleDescription(row.description);
        combo->view()->setAccessibleName(row.label);
        labelOf(controls.boxDetail, row.label)->setBuddy(combo); // screen readers on Linux read it
        controls.*row.member = combo;
    }
    auto* table = new QTableView(controls.boxDetail);
    table->verticalHeader()->hide();
    table->horizontalHeader()->setHighlightSections(false);
    table->verticalHeader()->setMinimumSectionSize(kPropertyRowHeight);
    table->verticalHeader()->setDefaultSectionSize(kPropertyRowHeight);
    table->setTabKeyNavigation(false);
    nameAndPlace(table, "tbProperties_Detail", "Properties", {0, 362, 440, 180});
    controls.tbProperties_Detail = table;
    // A wrapped line of the hex view would be unreadable.
    controls.txtViewBin_Detail->setLineWrapMode(QPlainTextEdit::NoWrap);
    controls.txtViewBin_Detail->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
}

void chainTabOrder(QWidget* content)
{
    QWidget* before = nullptr;
    for (const char* name : kTabOrder) {
        auto* widget = content->findChild<QWidget*>(name);
        if (before != nullptr) {
            QWidget::setTabOrder(before, widget);
        }
        before = widget;
    }
}

} // namespace

void AppDelegate::MyLayoutUI()
{
    const bool scalar = isScalarMode == 1;
    const QSize size = scalar ? QSize(360, 670) : QSize(1200, 660);

    // A field measures its text in the application's font before it has its own. That font is not
    // needed in the window, and to load it takes time and memory.
    const QFont usual = QApplication::font();
    QApplication::setFont(helvetica(12));

    auto window = std::make_unique<QScrollArea>();
    window->setFrameShape(QFrame::NoFrame);
    window->setFocusPolicy(Qt::NoFocus);
    window->setWindowTitle(appTitle + "  " + kToolVersion + m_titleSuffix);
    auto* content = new QWidget;
    content->setFont(helvetica(12));
    content->resize(size); // the final size first, because frames are measured from the lower edge

    buildBoxes(*this, content);
    buildFields(*this);
    buildButtons(*this);
    buildUnsavedMark(*this);
    buildTexts(*this);
    buildPropertyEditor(*this);
    wirePropertyEditor();
    m_easyUpdate.connectBox();
    m_scalar.connectBox();
    m_flashPage.connectBox();
    chainTabOrder(content);
    if (!fwbinPath.empty()) {
        nstextfd_Scalar->setText(shownName(fwbinPath));
    }
    for (const BoxRow& row : kBoxes) {
        (this->*row.member)
            ->setVisible(row.shown == Shown::Always || (row.shown == Shown::ScalarOnly) == scalar);
    }

    boxHelp->setToolTip(shortcutList(*this));
    addShortcut(QKeySequence(Qt::Key_F1), content, [this] {
        openManual({m_place.resourcePath, nameBytes(apPath)});
    });
    m_focusHolder = new FocusHolder(content);

    window->setWidget(content);
    new ScreenFit(*window); // owned by the window
    m_window = std::move(window);
    QApplication::setFont(usual);
    m_window->show();
}

} // namespace vornadel
