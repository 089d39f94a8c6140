#include "app/ScreenFit.h"

#include <QEvent>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QStyle>
#include <QWindow>

#include <algorithm>

namespace vornadel
{

namespace
{

/// The size of the window manager's frame, as long as the system does not tell it.
constexpr QSize kFrameAllowance(10, 40);

QSize frameSize(const QWidget& window)
{
    const QMargins frame =
        window.windowHandle() == nullptr ? QMargins() : window.windowHandle()->frameMargins();
    return frame.isNull() ? kFrameAllowance
                          : QSize(frame.left() + frame.right(), frame.top() + frame.bottom());
}

/// The content with the bars that it needs to be reached in this room. A bar that only the other
/// one makes necessary adds nothing: in its direction the window is as large as the room.
QSize withBars(const QSize& content, const QSize& room, const QSize& bars)
{
    return content + QSize(content.height() > room.height() ? bars.width() : 0,
                           content.width() > room.width() ? bars.height() : 0);
}

} // namespace

ScreenFit::ScreenFit(QScrollArea& window) : QObject(&window), m_window(window)
{
    follow();
    window.installEventFilter(this);
}

bool ScreenFit::eventFilter(QObject* watched, QEvent* event)
{
    // When the window manager has put its frame around the window, it tells where the window is.
    if (event->type() == QEvent::Move || event->type() == QEvent::WindowActivate) {
        follow();
    } else if (event->type() == QEvent::Resize) {
        showBars();
    }
    return QObject::eventFilter(watched, event);
}

void ScreenFit::follow()
{
    const QRect screen = m_window.screen()->availableGeometry();
    const QSize frame = frameSize(m_window);
    const QSize room = screen.size() - frame;
    if (room == m_room) {
        return;
    }
    m_room = room;
    const QSize before = m_window.size();
    fitInto(room);
    if (m_window.isVisible() && m_window.size() != before) {
        // It may have grown beyond an edge of the screen.
        const QPoint last = screen.bottomRight() - QPoint(m_window.width() + frame.width() - 1,
                                                          m_window.height() + frame.height() - 1);
        m_window.move(std::max(screen.x(), std::min(m_window.x(), last.x())),
                      std::max(screen.y(), std::min(m_window.y(), last.y())));
    }
}

void ScreenFit::fitInto(const QSize& room)
{
    const QSize content = m_window.widget()->size();
    const int overlap =
        m_window.style()->pixelMetric(QStyle::PM_ScrollView_ScrollBarOverlap, nullptr, &m_window);
    const QSize bars(m_window.verticalScrollBar()->sizeHint().width() - overlap,
                     m_window.horizontalScrollBar()->sizeHint().height() - overlap);
    const QSize full = withBars(content, room, bars);
    const QSize size = full.boundedTo(room);
    // In a direction in which everything fits, the window keeps its size.
    m_kept = QSize(full.width() > room.width() ? 0 : size.width(),
                   full.height() > room.height() ? 0 : size.height());
    m_window.setMinimumSize(m_kept);
    m_window.setMaximumSize(full);
    m_window.resize(size);
    showBars();
}

void ScreenFit::showBars()
{
    // The window manager may round the size down, as it does at a scale like 1.5. Nothing scrolls
    // for that. One that tiles its windows may make them smaller than they want to be.
    constexpr int kRounding = 1;
    const auto policy = [](int kept, int size) {
        return kept > 0 && size + kRounding >= kept ? Qt::ScrollBarAlwaysOff
                                                    : Qt::ScrollBarAsNeeded;
    };
    m_window.setHorizontalScrollBarPolicy(policy(m_kept.width(), m_window.width()));
    m_window.setVerticalScrollBarPolicy(policy(m_kept.height(), m_window.height()));
}

} // namespace vornadel
