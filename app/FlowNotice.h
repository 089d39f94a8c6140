#pragma once

#include "editor/Tone.h"

#include <QString>

class QWidget;

namespace vornadel
{

struct WindowControls;

/// Tells how a flow stands and how it ended to those who do not see the end of the progress text:
/// the step that runs, or the result with its reason, is the tool tip of the text and of the
/// slider, and at the end a screen reader speaks it. Main thread.
class FlowNotice
{
public:
    explicit FlowNotice(WindowControls& controls) : m_controls(controls) {}

    void clear();                              ///< with the progress text
    void said(const QString& text, Tone tone); ///< appended to it
    void ended();                              ///< the flow has ended
    /// Makes the window's place in the taskbar conspicuous while another window is active.
    void askForAttention();

private:
    void showTip();

    WindowControls& m_controls;
    QString m_text; ///< the last blue text, or all red ones after it
    Tone m_tone = Tone::Blue;
    QWidget* m_spoken = nullptr; ///< belongs to the window
};

} // namespace vornadel
