#pragma once

#include <QAbstractTableModel>

namespace vornadel
{

class TableViewController;

/// Adapts the controller to Qt's table. It asks the controller for the number of rows once per
/// reload, because Qt asks all the time.
class PropertyModel final : public QAbstractTableModel
{
public:
    enum Column : int { Property, CurValue, ColumnCount };

    explicit PropertyModel(TableViewController& controller) : m_controller(controller) {}

    /// `sameItems`: the rows still show the same items, so selection and scrolling stay.
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
