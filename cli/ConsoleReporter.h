#pragma once

#include "flows/FlowTexts.h"

#include <ostream>

namespace vornadel
{

/// Shows one run of a flow on a console. On a terminal the percentage is
/// updated in one line; elsewhere each value gets its own line. Values that do not increase are
/// left out, because the bar's return to 0 at the end would look as if the work were lost. Red
/// lines go to `err`.
class ConsoleReporter final : public FlowTextReporter
{
public:
    /// `terminal` says whether `bar` is one, which then shows what changes in its line.
    ConsoleReporter(std::ostream& out, std::ostream& err, std::ostream& bar, bool terminal);
    ~ConsoleReporter() override;

private:
    void resetProgressInfo() override;
    void appendProgressInfo_Blue(const std::string& text) override;
    void appendProgressInfo_Red(const std::string& text) override;
    void updateProgressBar(double percent, Wait wait) override;
    void endMovingLine();

    std::ostream& m_out;
    std::ostream& m_err;
    std::ostream& m_bar;
    bool m_terminal;
    double m_shown = -1;   // percent
    bool m_moving = false; // the cursor is after a percentage
};

} // namespace vornadel
