#include "app/FlowNotice.h"

#include "app/Controls.h"
#include "app/WindowControls.h"
#include "editor/ToolTip.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QApplication>

namespace vornadel
{

namespace
{

/// A notification for screen readers, one transparent pixel. They speak its name when it appears.
class SpokenText final : public QWidget
{
public:
    explicit SpokenText(QWidget* parent) : QWidget(parent)
    {
        setObjectName("flowNotice");
        setAttribute(Qt::WA_TransparentForMouseEvents);
        setGeometry(0, 0, 1, 1);
        hide();
        [[maybe_unused]] static const bool once = [] {
            QAccessible::installFactory(describe);
            return true;
        }();
    }

private:
    static QAccessibleInterface* describe(const QString& /*className*/, QObject* object)
    {
        auto* const self = dynamic_cast<SpokenText*>(object);
        return self == nullptr ? nullptr : new QAccessibleWidget(self, QAccessible::Notification);
    }
};

} // namespace

void FlowNotice::clear()
{
    m_text.clear();
    showTip();
    if (m_spoken != nullptr) {
        m_spoken->hide();
    }
}

void FlowNotice::said(const QString& text, Tone tone)
{
    // The reason of a failure and its summary come one after the other, both in red.
    m_text = tone == Tone::Red && m_tone == Tone::Red ? m_text + text : text;
    m_tone = tone;
    showTip();
}

void FlowNotice::ended()
{
    if (m_spoken == nullptr) {
        m_spoken = new SpokenText(m_controls.boxUpdate);
    }
    m_spoken->hide(); // or it would not appear anew
    m_spoken->setAccessibleName(m_text.trimmed());
    m_spoken->show();
}

void FlowNotice::askForAttention() { QApplication::alert(m_controls.boxUpdate->window()); }

void FlowNotice::showTip()
{
    const QString tip = plainToolTip(m_text.trimmed());
    m_controls.nstfUpdateInfo_UpdateFW->setToolTip(tip);
    m_controls.slider->setToolTip(tip);
}

} // namespace vornadel
