#pragma once

#include <QString>
#include <QStringList>

#include <functional>

class QTableView;

namespace vornadel
{

/// A second data source for a table, with three fixed rows. Nothing creates it today.
class MyTableView
{
public:
    /// `log` receives the lines for the console.
    explicit MyTableView(std::function<void(const QString&)> log);

    int numberOfRowsInTableView() const;
    static QString tableView_objectValueForTableColumn_row(const QString& column, int row);
    void tableView_setObjectValue_forTableColumn_row(int value, const QString& column,
                                                     int row) const;
    void tableViewSelectionDidChange() const;

    QTableView* tableView = nullptr; ///< not owned

private:
    std::function<void(const QString&)> m_log;
    QStringList m_list{"111", "222", "333"};
};

} // namespace vornadel
