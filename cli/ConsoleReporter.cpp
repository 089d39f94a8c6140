#include "cli/ConsoleReporter.h"

#include <cmath>
#include <iomanip>

namespace vornadel
{

namespace
{

constexpr int kBarWidth = 50;

} // namespace

ConsoleReporter::ConsoleReporter(std::ostream& out, std::ostream& err, std::ostream& bar,
                                 bool terminal)
    : m_out(out), m_err(err), m_bar(bar), m_terminal(terminal)
{
}

ConsoleReporter::~ConsoleReporter() { endMovingLine(); }

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
    m_bar << '\r' << '[' << std::string(filled, '#') << std::string(kBarWidth - filled, ' ') << ']'
          << std::setw(4) << whole << '%' << std::flush;
    m_moving = true;
}

void ConsoleReporter::endMovingLine()
{
    if (m_moving) {
        m_bar << '\n' << std::flush;
        m_moving = false;
    }
}

} // namespace vornadel
