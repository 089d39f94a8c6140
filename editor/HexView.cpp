#include "editor/HexView.h"

#include "editor/HexText.h"
#include "editor/Tone.h"

#include <QEvent>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QTextBlock>

namespace vornadel
{

HexView::HexView(QPlainTextEdit& view) : m_view(view), m_red(view.document())
{
    view.installEventFilter(this);
    view.viewport()->installEventFilter(this);
}

void HexView::show(const HexText& hex)
{
    m_view.setPlainText(hex.text);
    m_red = QTextCursor(m_view.document());
    if (hex.redLength > 0) { // otherwise it stays at the top
        m_red.setPosition(static_cast<int>(hex.redStart));
        m_red.setPosition(static_cast<int>(hex.redStart + hex.redLength), QTextCursor::KeepAnchor);
    }
    mark();

    // First the end, then the start, so that both are visible if there is room.
    for (const int position : {m_red.selectionEnd(), m_red.selectionStart()}) {
        QTextCursor cursor(m_view.document());
        cursor.setPosition(position);
        m_view.setTextCursor(cursor);
        m_view.ensureCursorVisible();
    }
}

void HexView::underline(std::optional<int> byte)
{
    if (m_underlined != byte) {
        m_underlined = byte;
        mark();
    }
}

void HexView::mark()
{
    QList<QTextEdit::ExtraSelection> marks;
    QTextEdit::ExtraSelection red;
    red.cursor = m_red;
    // A red that is readable on the view's background; the rest keeps the view's text colour.
    red.format.setForeground(toneColor(Tone::Red, m_view.palette().color(QPalette::Base)));
    marks.append(red);
    if (m_underlined) {
        QTextEdit::ExtraSelection line;
        line.cursor = digitsOf(*m_underlined);
        line.format.setFontUnderline(true);
        marks.append(line);
    }
    m_view.setExtraSelections(marks);
}

QTextCursor HexView::digitsOf(int byte) const
{
    const QTextBlock line = m_view.document()->findBlockByNumber(byte / kHexBytesInLine);
    const int column = hexColumn(line.text(), byte % kHexBytesInLine);
    QTextCursor digits(m_view.document());
    if (column >= 0) {
        digits.setPosition(line.position() + column);
        digits.movePosition(QTextCursor::Right, QTextCursor::KeepAnchor, 2);
    }
    return digits;
}

std::optional<int> HexView::byteAt(const QPoint& position) const
{
    const QTextCursor there = m_view.cursorForPosition(position);
    const QTextBlock line = there.block();
    for (int i = 0; i < kHexBytesInLine; ++i) {
        QTextCursor digits = digitsOf(line.blockNumber() * kHexBytesInLine + i);
        if (!digits.hasSelection()) {
            continue;
        }
        const QRect last = m_view.cursorRect(digits);
        digits.setPosition(digits.anchor());
        if (m_view.cursorRect(digits).united(last).contains(position)) {
            return line.blockNumber() * kHexBytesInLine + i;
        }
    }
    return {};
}

bool HexView::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == &m_view && event->type() == QEvent::PaletteChange) {
        mark();
    } else if (watched == m_view.viewport() && event->type() == QEvent::MouseButtonRelease) {
        const auto& release = static_cast<const QMouseEvent&>(*event);
        if (release.button() == Qt::LeftButton && !m_view.textCursor().hasSelection() && clicked) {
            if (const std::optional<int> byte = byteAt(release.pos())) {
                clicked(*byte);
            }
        }
    }
    return QObject::eventFilter(watched, event);
}

} // namespace vornadel
