#pragma once

#include <QObject>
#include <QTextCursor>

#include <functional>
#include <optional>

class QPlainTextEdit;
class QPoint;

namespace vornadel
{

struct HexText;

/// Shows the descriptor block in a text view: some bytes are red, and one may be underlined. Tells
/// which byte is clicked. Bytes are numbered from the start of the block.
class HexView final : public QObject
{
public:
    /// `view` must outlive this.
    explicit HexView(QPlainTextEdit& view);

    /// Shows the text and scrolls to its red range.
    void show(const HexText& hex);

    /// Underlines a byte that the view shows, and no other; nothing if there is no such byte.
    void underline(std::optional<int> byte);

    std::function<void(int byte)> clicked; ///< not at the end of a selection by mouse

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void mark();
    QTextCursor digitsOf(int byte) const;
    std::optional<int> byteAt(const QPoint& position) const;

    QPlainTextEdit& m_view;
    QTextCursor m_red;
    std::optional<int> m_underlined;
};

} // namespace vornadel
