#include "app/Controls.h"

#include "editor/AssistedChoice.h"
#include "editor/ToolTip.h"

#include <QAccessibleWidget>
#include <QChildEvent>
#include <QEvent>
#include <QFocusFrame>
#include <QKeyEvent>
#include <QPainter>
#include <QProxyStyle>
#include <QScrollBar>
#include <QStyleOptionComboBox>
#include <QStyleOptionFrame>
#include <QTextCursor>
#include <QWheelEvent>

#include <cmath>

namespace vornadel
{

namespace
{

/// Opens a list below its box, with scrolling; other styles cover the screen with all the entries.
class ScrollingListStyle final : public QProxyStyle
{
public:
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* data) const override
    {
        return hint == SH_ComboBox_Popup ? 0 : QProxyStyle::styleHint(hint, option, widget, data);
    }
};

/// The ground of a read-only field: off the window's colour, towards the text's.
QColor readOnlyGround(const QPalette& palette)
{
    constexpr float kTowardsText = 0.05F;
    return mixedColor(palette.color(QPalette::Window), palette.color(QPalette::WindowText),
                      kTowardsText);
}

/// The part of a box's border that its children could cover: left, right and below. As a focus
/// frame it lets the mouse pass and is hidden from screen readers.
class BoxBorder final : public QFocusFrame
{
public:
    explicit BoxBorder(TitledBox& box) : QFocusFrame(&box), m_box(box) {}

protected:
    void paintEvent(QPaintEvent* /*event*/) override
    {
        QPainter(this).fillRect(rect(), m_box.borderColor());
    }

private:
    TitledBox& m_box;
};

/// Tells assistive technology that a box is a group with a name.
QAccessibleInterface* boxAccess(const QString& /*className*/, QObject* object)
{
    auto* const box = dynamic_cast<TitledBox*>(object);
    return box == nullptr ? nullptr
                          : new QAccessibleWidget(box, QAccessible::Grouping, box->title());
}

} // namespace

TextView::TextView(QWidget* parent) : QPlainTextEdit(parent)
{
    setReadOnly(true);
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setTabChangesFocus(true);
    setUndoRedoEnabled(false);
}

void TextView::setTone(Tone tone)
{
    m_tone = tone;
    applyColours();
}

void TextView::showAsField()
{
    setFocusPolicy(Qt::ClickFocus);
    m_isField = true;
    applyColours();
}

void TextView::append(const QString& text)
{
    const int scrolledTo = verticalScrollBar()->value();
    QTextCursor end(document());
    end.movePosition(QTextCursor::End);
    end.insertText(text);
    verticalScrollBar()->setValue(scrolledTo);
}

void TextView::changeEvent(QEvent* event)
{
    QPlainTextEdit::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        applyColours();
    }
}

void TextView::applyColours()
{
    QPalette colors = palette();
    if (m_isField) {
        colors.setColor(QPalette::Base, readOnlyGround(colors));
    }
    if (m_tone) {
        colors.setColor(QPalette::Text, toneColor(*m_tone, colors.color(QPalette::Base)));
    }
    if (colors != palette()) {
        setPalette(colors);
    }
}

ReadOnlyField::ReadOnlyField(QWidget* parent) : QLineEdit(parent)
{
    setReadOnly(true);
    setFocusPolicy(Qt::ClickFocus);
}

void ReadOnlyField::initStyleOption(QStyleOptionFrame* option) const
{
    QLineEdit::initStyleOption(option);
    option->palette.setColor(QPalette::Base, readOnlyGround(palette()));
}

void ActionButton::keyPressEvent(QKeyEvent* event)
{
    if (event->key() != Qt::Key_Return && event->key() != Qt::Key_Enter) {
        QPushButton::keyPressEvent(event);
    } else if (!event->isAutoRepeat()) {
        click();
    }
}

ProgressSlider::ProgressSlider(QWidget* parent) : QSlider(Qt::Horizontal, parent)
{
    setRange(0, 100);
    setFocusPolicy(Qt::NoFocus);
    connect(this, &QSlider::valueChanged, this, &ProgressSlider::showPercent);
}

void ProgressSlider::setDoubleValue(double percent)
{
    m_percent = percent;
    showPercent();
}

void ProgressSlider::showPercent() { setValue(static_cast<int>(std::lround(m_percent))); }

// Ignored events go to what is around the bar, so the wheel scrolls the window.
void ProgressSlider::keyPressEvent(QKeyEvent* event) { event->ignore(); }
void ProgressSlider::wheelEvent(QWheelEvent* event) { event->ignore(); }

PickList::PickList(QWidget* parent) : QComboBox(parent)
{
    auto* const style = new ScrollingListStyle;
    style->setParent(this);
    setStyle(style);
    setMaxVisibleItems(10);
    takeAssistedChoices(*this);
    // Before whoever uses the choice, who may have another tip for it.
    connect(this, &QComboBox::currentIndexChanged, this,
            [this] { setToolTip(plainToolTip(currentText())); });
}

void PickList::initStyleOption(QStyleOptionComboBox* option) const
{
    QComboBox::initStyleOption(option);
    constexpr int kMargins = 2; // of the text in its field
    const QRect field =
        style()->subControlRect(QStyle::CC_ComboBox, option, QStyle::SC_ComboBoxEditField, this);
    option->currentText = option->fontMetrics.elidedText(option->currentText, Qt::ElideMiddle,
                                                         field.width() - kMargins);
}

void PickList::wheelEvent(QWheelEvent* event) { event->ignore(); }

TitledBox::TitledBox(const QString& title, QWidget* parent) : QFrame(parent), m_title(title)
{
    m_border = new BoxBorder(*this);
    m_border->move(0, kTitleHeight);
    QAccessible::installFactory(boxAccess); // a second time it does nothing
}

void TitledBox::setBorderTone(Tone tone)
{
    m_borderTone = tone;
    update();
}

QColor TitledBox::borderColor() const
{
    return m_borderTone ? toneColor(*m_borderTone, palette().color(QPalette::Window))
                        : palette().color(QPalette::Mid);
}

void TitledBox::setDropHint(bool shown)
{
    m_dropHint = shown;
    update();
}

void TitledBox::childEvent(QChildEvent* event)
{
    QFrame::childEvent(event);
    if (event->added() && m_border != nullptr) {
        m_border->raise();
    }
}

void TitledBox::resizeEvent(QResizeEvent* /*event*/)
{
    m_border->setGeometry(rect().adjusted(0, kTitleHeight, 0, 0));
    const QRect border = m_border->rect();
    m_border->setMask(QRegion(border).subtracted(border.adjusted(1, 0, -1, -1)));
}

void TitledBox::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    const QColor window = palette().color(QPalette::Window);
    painter.fillRect(rect(), borderColor());
    painter.fillRect(rect().adjusted(1, 1, -1, -1),
                     window.lightnessF() < 0.5F ? window.lighter(115) : window.lighter(103));
    if (m_dropHint) {
        painter.fillRect(0, 0, width(), kTitleHeight, palette().color(QPalette::Highlight));
    }
    painter.setPen(palette().color(m_dropHint ? QPalette::HighlightedText : QPalette::WindowText));
    painter.drawText(QRect(8, 0, width() - 16, kTitleHeight), Qt::AlignLeft | Qt::AlignVCenter,
                     m_title);
}

} // namespace vornadel
