#include "bench/Table.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace vornadel::bench
{

namespace
{

std::string figureOrDash(double figure)
{
    if (figure == 0) {
        return "-";
    }
    char text[32];
    std::snprintf(text, sizeof text, "%.2f", figure);
    return text;
}

} // namespace

double Series::median() const
{
    if (m_figures.empty()) {
        return 0;
    }
    std::vector<double> sorted = m_figures;
    std::sort(sorted.begin(), sorted.end());
    const std::size_t middle = sorted.size() / 2;
    return sorted.size() % 2 == 1 ? sorted[middle] : (sorted[middle - 1] + sorted[middle]) / 2;
}

double Series::worst() const
{
    return m_figures.empty() ? 0 : *std::max_element(m_figures.begin(), m_figures.end());
}

double Series::quantile(double part) const
{
    if (m_figures.empty()) {
        return 0;
    }
    std::vector<double> sorted = m_figures;
    std::sort(sorted.begin(), sorted.end());
    const double rank = std::ceil(part * static_cast<double>(sorted.size()));
    return sorted[static_cast<std::size_t>(std::max(rank, 1.0)) - 1];
}

Row rowOf(const std::string& what, const Series& series, double target)
{
    return {what, series.count(), target, series.median(), series.worst()};
}

void printTable(const std::string& title, const std::string& unit, const std::vector<Row>& rows)
{
    std::printf("%s\n", title.c_str());
    std::printf("  %-52s %5s %11s %11s %11s\n", ("in " + unit).c_str(), "runs", "target",
                "measured", "worst");
    for (const Row& row : rows) {
        const char* const verdict = row.target == 0              ? ""
                                    : row.measured <= row.target ? "met"
                                                                 : "MISSED";
        std::printf("  %-52s %5zu %11s %11s %11s  %s\n", row.what.c_str(), row.runs,
                    figureOrDash(row.target).c_str(), figureOrDash(row.measured).c_str(),
                    figureOrDash(row.worst).c_str(), verdict);
    }
    std::printf("\n");
    std::fflush(stdout);
}

} // namespace vornadel::bench
