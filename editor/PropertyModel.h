#pragma once

#include <QAbstractTableModel>

namespace vornadel
{

class TableViewController;

/// Stands between Qt's table and the controller. How many rows there are is asked once per reload:
/// Qt asks all the time.
class PropertyModel final : public QAbstractTableModel
{
public:
    enum Column : int { Property, CurValue, ColumnCount };

    explicit PropertyModel(TableViewController& controller) : m_controller(controller) {}

    /// `sameItems`: the rows stand for what they stood for before, so selection and scrolling stay.
    void reload(bool sameItems);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;

private:
    TableViewController& m_controller;
    int m_rows = 0;
};

} // namespace vornadel
