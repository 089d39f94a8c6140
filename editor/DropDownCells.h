#pragma once

#include <QPersistentModelIndex>
#include <QStyledItemDelegate>

class QComboBox;
class QTableView;

namespace vornadel
{

/// Makes the cells of one column of a table drop-downs: they look like one at rest, open with one
/// click, with Return, Space, F2 or Alt+Down on their row, and hand the position that was chosen to
/// the model (setData, EditRole), also when it is the one that was chosen before. Dismissed, they
/// change nothing. A cell whose model does not let it be edited looks the same and stays shut.
class DropDownCells final : public QStyledItemDelegate
{
public:
    /// What the model must answer beside the text that a cell shows at rest.
    enum Role : int {
        EntriesRole = Qt::UserRole, ///< QStringList: what the open list offers
        ChosenRole                  ///< int: position of the chosen entry, -1 for none
    };

    /// Lives as long as the table or longer.
    DropDownCells(QTableView& table, int column);

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override;
    void setEditorData(QWidget* editor, const QModelIndex& index) const override;
    void setModelData(QWidget* editor, QAbstractItemModel* model,
                      const QModelIndex& index) const override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    enum class OpenedBy { Mouse, Key };

    void open(const QModelIndex& index, OpenedBy by);
    void finish(QComboBox& list, int chosen, const QPersistentModelIndex& index);

    QTableView& m_table;
    int m_column;
};

} // namespace vornadel
