#pragma once

#include <QObject>
#include <QSize>

class QScrollArea;

namespace vornadel
{

/// Gives a window the size of its content. If the screen has no room for that, the content scrolls:
/// the window grows by each scroll bar that it needs, as far as there is room. Follows the window
/// to another screen. Main thread.
class ScreenFit final : public QObject
{
public:
    /// Fits the window into its screen. The window owns this object.
    explicit ScreenFit(QScrollArea& window);

    /// Fits the window, without its frame, into this room.
    void fitInto(const QSize& room);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void follow();
    void showBars();

    QScrollArea& m_window;
    QSize m_room;
    QSize m_kept; ///< the size that the window should keep; 0 in a direction in which it scrolls
};

} // namespace vornadel
