#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace vornadel::bench
{

/// Figures of one kind, in the order in which they were taken.
class Series
{
public:
    void add(double figure) { m_figures.push_back(figure); }
    std::size_t count() const { return m_figures.size(); }
    double median() const; ///< 0 without figures
    double worst() const;  ///< the largest; 0 without figures
    /// The smallest figure that at least that part of the figures (above 0, up to 1) does not
    /// exceed; 0 without any.
    double quantile(double part) const;

private:
    std::vector<double> m_figures;
};

/// One line of a table. The target is what the measured figure may be at most; 0 for a figure that
/// has none.
struct Row {
    std::string what;
    std::size_t runs = 0;
    double target = 0;
    double measured = 0;
    double worst = 0; ///< of all runs; 0 where it means nothing
};

/// A row of a series, measured by its median.
Row rowOf(const std::string& what, const Series& series, double target);

/// Prints the rows to standard output under a title; all figures in `unit`.
void printTable(const std::string& title, const std::string& unit, const std::vector<Row>& rows);

} // namespace vornadel::bench
