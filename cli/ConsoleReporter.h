#pragma once

#include "flows/FlowReporter.h"

#include <ostream>

namespace vornadel
{

/// Tells one flow's progress on a console. On a terminal the percentage is one line that moves;
/// elsewhere each value is a line of its own. Values that do not go up are left out: a bar that
/// goes back to 0 at the end frees it in a window, but would tell a reader of lines that all was in
/// vain. Red lines go to `err`.
class ConsoleReporter final : public FlowReporter
{
public:
    ConsoleReporter(std::ostream& out, std::ostream& err, bool terminal);
    ~ConsoleReporter() override;

    void resetProgressInfo() override;
    void appendProgressInfo_Blue(const std::string& text) override;
    void appendProgressInfo_Red(const std::string& text) override;
    void updateProgressBar(double percent, Wait wait) override;

private:
    void endMovingLine();

    std::ostream& m_out;
    std::ostream& m_err;
    bool m_terminal;
    double m_shown = -1;   // percent
    bool m_moving = false; // the cursor stands behind a percentage
};

} // namespace vornadel
