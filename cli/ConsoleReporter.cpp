#include "cli/ConsoleReporter.h"

#include <cmath>
#include <iomanip>

namespace vornadel
{

namespace
{

constexpr int kBarWidth = 50;

} // namespace

ConsoleReporter::ConsoleReporter(std::ostream& out, std::ostream& err, bool terminal,
                                 StopRequest& stop)
    : m_out(out), m_err(err), m_terminal(terminal), m_stop(stop)
{
}

ConsoleReporter::~ConsoleReporter() { endMovingLine(); }

void ConsoleReporter::started(const FlowStart& start)
{
    m_stop.enter(StopRequest::Phase::Unchanged);
    FlowTextReporter::started(start);
}

void ConsoleReporter::stepStarted(Step step)
{
    // A signal that came after the flow's last look at its stop flag has promised to stop it.
    const bool begins = (step == Step::Erase || step == Step::Restart) && !m_mustFinish;
    m_mustFinish = m_mustFinish || begins;
    if (begins && m_stop.enter(StopRequest::Phase::Changing)) {
        appendProgressInfo_Red(kFinishing + std::string("\n"));
    }
    FlowTextReporter::stepStarted(step);
}

void ConsoleReporter::finished(const FlowResult& result)
{
    m_result = result;
    m_stop.enter(StopRequest::Phase::NoFlow);
    FlowTextReporter::finished(result);
}

void ConsoleReporter::resetProgressInfo() {}

void ConsoleReporter::appendProgressInfo_Blue(const std::string& text)
{
    endMovingLine();
    m_out << text << std::flush;
}

void ConsoleReporter::appendProgressInfo_Red(const std::string& text)
{
    endMovingLine();
    m_err << text << std::flush;
}

void ConsoleReporter::updateProgressBar(double percent, Wait /*wait*/)
{
    if (percent <= m_shown) {
        return;
    }
    m_shown = percent;
    const auto whole = static_cast<int>(std::lround(percent));
    if (!m_terminal) {
        m_out << whole << "%\n" << std::flush;
        return;
    }
    const auto filled = static_cast<std::size_t>(whole * kBarWidth / 100);
    m_out << '\r' << '[' << std::string(filled, '#') << std::string(kBarWidth - filled, ' ') << ']'
          << std::setw(4) << whole << '%' << std::flush;
    m_moving = true;
}

void ConsoleReporter::endMovingLine()
{
    if (m_moving) {
        m_out << '\n' << std::flush;
        m_moving = false;
    }
}

} // namespace vornadel
