#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace vornadel::bench
{

/// Measured values of one kind, in the order in which they were taken.
class Series
{
public:
    void add(double figure) { m_figures.push_back(figure); }
    std::size_t count() const { return m_figures.size(); }
    double median() const; ///< 0 without figures
    double worst() const;  ///< the largest; 0 without figures
    /// The smallest figure such that `part` of all figures (above 0, up to 1) are no larger; 0
    /// without figures.
    double quantile(double part) const;

private:
    std::vector<double> m_figures;
};

/// One line of a table. The target is the largest accepted figure; 0 for none.
struct Row {
    std::string what;
    std::size_t runs = 0;
    double target = 0;
    double measured = 0;
    double worst = 0; ///< of all runs; 0 where it is meaningless
};

/// A row for a series; the measured figure is the median.
Row rowOf(const std::string& what, const Series& series, double target);

/// Prints a table to standard output; all figures are in `unit`.
void printTable(const std::string& title, const std::string& unit, const std::vector<Row>& rows);

} // namespace vornadel::bench
