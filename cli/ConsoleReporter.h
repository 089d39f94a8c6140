#pragma once

#include "flows/FlowTexts.h"
#include "platform/Clock.h"

#include <functional>
#include <ostream>
#include <string>

namespace vornadel
{

/// How the progress of a flow is shown.
enum class Progress {
    Bar,   ///< in one line that changes
    Plain, ///< a line for each step, and one whenever nothing was printed for five seconds
    None,  ///< only how it ends
};

/// Shows one run of a flow on a console. Red lines go to `err`.
class ConsoleReporter final : public FlowTextReporter
{
public:
    struct Style {
        Progress progress = Progress::Plain;
        std::function<int()> columns; ///< the width that a bar must fit now; 0 if it is not known
    };

    /// `bar` gets what changes in its line.
    ConsoleReporter(std::ostream& out, std::ostream& err, std::ostream& bar, Clock& clock,
                    Style style);
    ~ConsoleReporter() override;

    void stepStarted(Step step) override;
    void waiting(Clock::Duration sofar) override;

private:
    void resetProgressInfo() override;
    void appendProgressInfo_Blue(const std::string& text) override;
    void appendProgressInfo_Red(const std::string& text) override;
    void updateProgressBar(double percent, Wait wait) override;
    void drawBar(const std::string& suffix);
    void printAfterSilence(const std::string& line);
    void endMovingLine();

    std::ostream& m_out;
    std::ostream& m_err;
    std::ostream& m_bar;
    Clock& m_clock;
    Style m_style;
    Clock::Duration m_lastLine; // when it was printed
    int m_percent = 0;          // shown
    std::size_t m_drawn = 0;    // characters in the moving line
    bool m_inStepText = false;
};

} // namespace vornadel
