#pragma once

#include <QPointer>
#include <QWidget>

namespace vornadel
{

/// Has the keyboard focus while the control that had it is disabled, and ignores every key. Qt
/// would pass the focus on to the next control, which might act on keys meant for another. Visible
/// only while it may have the focus. Main thread.
class FocusHolder final : public QWidget
{
public:
    explicit FocusHolder(QWidget* content);

    /// Takes the focus if `control` has it. Call it before the control is disabled.
    void takeFrom(QWidget& control);
    /// Returns the focus to where it came from, unless the user has moved it meanwhile.
    void giveBack();

private:
    QPointer<QWidget> m_from;
};

} // namespace vornadel
