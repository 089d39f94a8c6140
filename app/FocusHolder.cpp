#include "app/FocusHolder.h"

namespace vornadel
{

FocusHolder::FocusHolder(QWidget* content) : QWidget(content)
{
    // The chain of the Tab key accepts no widget without a policy. This one has no area to click
    // on.
    setFocusPolicy(Qt::ClickFocus);
    setGeometry(0, 0, 0, 0);
    setObjectName("focusHolder");
    setAccessibleName("The buttons are off while the tool works on the hub");
    hide();
}

void FocusHolder::takeFrom(QWidget& control)
{
    // QApplication's focus widget is null while another window is active.
    if (control.window()->focusWidget() != &control) {
        return;
    }
    m_from = &control;
    show();
    setTabOrder(&control, this); // so that the Tab key goes on from there
    setFocus(Qt::OtherFocusReason);
}

void FocusHolder::giveBack()
{
    if (m_from != nullptr && window()->focusWidget() == this) {
        m_from->setFocus(Qt::OtherFocusReason);
    }
    m_from = nullptr;
    hide();
}

} // namespace vornadel
