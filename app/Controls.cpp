#include "app/Controls.h"

#include "editor/ToolTip.h"

#include <QEvent>
#include <QPainter>
#include <QProxyStyle>
#include <QScrollBar>
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
    applyTone();
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
        applyTone();
    }
}

void TextView::applyTone()
{
    if (!m_tone) {
        return;
    }
    QPalette colors = palette();
    const QColor color = toneColor(*m_tone, colors.color(QPalette::Base));
    if (colors.color(QPalette::Text) != color) {
        colors.setColor(QPalette::Text, color);
        setPalette(colors);
    }
}

ProgressSlider::ProgressSlider(QWidget* parent) : QSlider(Qt::Horizontal, parent)
{
    setRange(0, 100);
    connect(this, &QSlider::valueChanged, [this](int value) { m_percent = value; });
}

void ProgressSlider::setDoubleValue(double percent)
{
    setValue(static_cast<int>(std::lround(percent)));
    m_percent = percent; // finer than the position of the handle
}

PickList::PickList(QWidget* parent) : QComboBox(parent)
{
    auto* const style = new ScrollingListStyle;
    style->setParent(this);
    setStyle(style);
    setMaxVisibleItems(10);
    connect(this, &QComboBox::currentTextChanged, this,
            [this](const QString& text) { setToolTip(plainToolTip(text)); });
}

void PickList::wheelEvent(QWheelEvent* event) { event->ignore(); }

TitledBox::TitledBox(const QString& title, QWidget* parent) : QFrame(parent), m_title(title)
{
    setAccessibleName(title);
}

void TitledBox::setBorderTone(Tone tone)
{
    m_borderTone = tone;
    update();
}

void TitledBox::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor window = palette().color(QPalette::Window);
    painter.setPen(m_borderTone ? toneColor(*m_borderTone, window)
                                : palette().color(QPalette::Mid));
    painter.setBrush(window.lightnessF() < 0.5F ? window.lighter(115) : window.lighter(103));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 4, 4);
    painter.setPen(palette().color(QPalette::WindowText));
    painter.drawText(QRect(8, 0, width() - 16, kTitleHeight), Qt::AlignLeft | Qt::AlignVCenter,
                     m_title);
}

} // namespace vornadel
