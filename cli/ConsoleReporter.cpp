#include "cli/ConsoleReporter.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

namespace vornadel
{

namespace
{

constexpr int kLongestBar = 50;
constexpr int kUsualColumns = 80;
constexpr Clock::Duration kLongestSilence = std::chrono::seconds(5);

} // namespace

ConsoleReporter::ConsoleReporter(std::ostream& out, std::ostream& err, std::ostream& bar,
                                 Clock& clock, Style style)
    : m_out(out), m_err(err), m_bar(bar), m_clock(clock), m_style(std::move(style)),
      m_lastLine(clock.now())
{
}

ConsoleReporter::~ConsoleReporter() { endMovingLine(); }

void ConsoleReporter::stepStarted(Step step)
{
    m_inStepText = true;
    FlowTextReporter::stepStarted(step);
    m_inStepText = false;
}

void ConsoleReporter::waiting(Clock::Duration sofar)
{
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(sofar).count();
    const std::string waited = std::to_string(seconds) + " s";
    if (m_style.progress == Progress::Bar) {
        drawBar(" waiting " + waited);
    } else {
        printAfterSilence("waiting for the hub, " + waited);
    }
}

void ConsoleReporter::resetProgressInfo() {}

void ConsoleReporter::appendProgressInfo_Blue(const std::string& text)
{
    endMovingLine();
    if (m_style.progress != Progress::None || !m_inStepText) {
        m_out << text << std::flush;
        m_lastLine = m_clock.now();
    }
}

void ConsoleReporter::appendProgressInfo_Red(const std::string& text)
{
    endMovingLine();
    m_err << text << std::flush;
}

void ConsoleReporter::updateProgressBar(double percent, Wait /*wait*/)
{
    const auto whole = static_cast<int>(std::lround(percent));
    if (whole <= m_percent) {
        return; // the bar's return to 0 at the end would look as if the work were lost
    }
    m_percent = whole;
    if (m_style.progress == Progress::Bar) {
        drawBar({});
    } else {
        printAfterSilence(std::to_string(whole) + '%');
    }
}

void ConsoleReporter::drawBar(const std::string& suffix)
{
    const int known = m_style.columns();
    const int columns = known > 0 ? known : kUsualColumns;
    const std::string percent = std::to_string(m_percent) + '%';
    const std::string end = ']' + std::string(5 - percent.size(), ' ') + percent + suffix;
    // One column stays free, because a terminal may break a line that fills its last.
    const int width = std::clamp(columns - 2 - static_cast<int>(end.size()), 0, kLongestBar);
    const auto filled = static_cast<std::size_t>(m_percent * width / 100);
    const std::string line = '[' + std::string(filled, '#') +
                             std::string(static_cast<std::size_t>(width) - filled, ' ') + end;
    const std::size_t room = static_cast<std::size_t>(columns - 1);
    const std::size_t leftOver = std::min(m_drawn, room); // of the line drawn before
    m_bar << '\r' << line.substr(0, room)
          << std::string(leftOver > line.size() ? leftOver - line.size() : 0, ' ') << std::flush;
    m_drawn = line.size();
}

void ConsoleReporter::printAfterSilence(const std::string& line)
{
    if (m_style.progress == Progress::Plain && m_clock.now() - m_lastLine >= kLongestSilence) {
        m_out << line << '\n' << std::flush;
        m_lastLine = m_clock.now();
    }
}

void ConsoleReporter::endMovingLine()
{
    if (m_drawn > 0) {
        m_bar << '\n' << std::flush;
        m_drawn = 0;
    }
}

} // namespace vornadel
