#pragma once

#include "flows/FlowTexts.h"

#include <ostream>

namespace vornadel
{

/// Shows one run of a flow on a console. On a terminal the percentage is one line that moves;
/// elsewhere each value is a line of its own. A value that does not go up is left out: the bar's
/// way back to 0 at the end would read as if the work were lost. Red lines go to `err`.
class ConsoleReporter final : public FlowTextReporter
{
public:
    ConsoleReporter(std::ostream& out, std::ostream& err, bool terminal);
    ~ConsoleReporter() override;

private:
    void resetProgressInfo() override;
    void appendProgressInfo_Blue(const std::string& text) override;
    void appendProgressInfo_Red(const std::string& text) override;
    void updateProgressBar(double percent, Wait wait) override;
    void endMovingLine();

    std::ostream& m_out;
    std::ostream& m_err;
    bool m_terminal;
    double m_shown = -1;   // percent
    bool m_moving = false; // the cursor is after a percentage
};

} // namespace vornadel
