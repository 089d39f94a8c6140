#include "editor/PropertyModel.h"

#include "editor/DropDownCells.h"
#include "editor/TableViewController.h"

#include <QFont>
#include <QSize>

namespace vornadel
{

namespace
{

constexpr int kHeaderHeight = 21;

QString identifier(int column)
{
    return column == PropertyModel::Property ? TableViewController::kPropertyColumn
                                             : TableViewController::kValueColumn;
}

} // namespace

void PropertyModel::reload(bool sameItems)
{
    const int rows = m_controller.numberOfRowsInTableView();
    if (sameItems) {
        if (rows > 0) {
            emit dataChanged(index(0, 0), index(rows - 1, ColumnCount - 1));
        }
        return;
    }
    beginResetModel();
    m_rows = rows;
    endResetModel();
}

int PropertyModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_rows;
}

int PropertyModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant PropertyModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal && role == Qt::DisplayRole && section < ColumnCount) {
        return identifier(section);
    }
    if (orientation == Qt::Horizontal && role == Qt::SizeHintRole) {
        // Otherwise Qt measures the text in bold, and loads a font for it at every start.
        return QSize(0, kHeaderHeight);
    }
    return QAbstractTableModel::headerData(section, orientation, role);
}

Qt::ItemFlags PropertyModel::flags(const QModelIndex& index) const
{
    Qt::ItemFlags flags = QAbstractTableModel::flags(index);
    flags.setFlag(Qt::ItemIsEditable, index.column() == CurValue &&
                                          !m_controller.valueCell(index.row()).entries.isEmpty());
    return flags;
}

QVariant PropertyModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid()) {
        return {};
    }
    switch (role) {
    case Qt::DisplayRole:
        return m_controller.tableView_objectValueForTableColumn_row(identifier(index.column()),
                                                                    index.row());
    case Qt::ToolTipRole: // a text may be longer than its column
        return m_controller.toolTip(data(index, Qt::DisplayRole).toString(), index.row());
    case Qt::AccessibleDescriptionRole:
        return m_controller.notes(index.row()).lines.join('\n');
    case Qt::FontRole: {
        QFont font;
        font.setBold(m_controller.notes(index.row()).edited);
        return font;
    }
    case Qt::ForegroundRole:
        return m_controller.notes(index.row()).locked ? QVariant(m_controller.lockedText())
                                                      : QVariant();
    case DropDownCells::LockedRole:
        return m_controller.notes(index.row()).locked;
    case DropDownCells::EntriesRole:
        return m_controller.valueCell(index.row()).entries;
    case DropDownCells::ChosenRole:
        return m_controller.valueCell(index.row()).chosen;
    default:
        return {};
    }
}

bool PropertyModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (role != Qt::EditRole || !flags(index).testFlag(Qt::ItemIsEditable)) {
        return false;
    }
    m_controller.tableView_setObjectValue_forTableColumn_row(
        value.toInt(), identifier(index.column()), index.row());
    return true;
}

} // namespace vornadel
