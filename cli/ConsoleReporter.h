#pragma once

#include "flows/FlowReporter.h"

#include <ostream>

namespace vornadel
{

/// Tells a flow's progress on a console. On a terminal the percentage is one line that moves; elsewhere each value is
/// a line of its own. Red lines go to `err`.
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
    bool m_moving = false; // the cursor stands behind a percentage
};

} // namespace vornadel
