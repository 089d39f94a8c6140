#pragma once

#include <QPersistentModelIndex>
#include <QStyledItemDelegate>

class QComboBox;
class QTableView;

namespace vornadel
{

/// Turns the cells of one table column into drop-downs. They always look like one. They open with
/// one click without a modifier key, or with Return, Space, F2 or Alt+Down on their row, and pass
/// the chosen position to the model (setData, EditRole), even if it was chosen before. Dismissing
/// one changes nothing. A cell that the model does not let the user edit looks the same but does
/// not open.
class DropDownCells final : public QStyledItemDelegate
{
public:
    /// What the model must provide besides the text of a closed cell.
    enum Role : int {
        EntriesRole = Qt::UserRole, ///< QStringList: what the open list offers
        ChosenRole,                 ///< int: position of the chosen entry, -1 for none
        LockedRole                  ///< bool: the cell looks disabled, but opens all the same
    };

    /// The delegate must live at least as long as the table.
    DropDownCells(QTableView& table, int column);

    /// From now on a cell opens, too, when assistive technology selects its row. The table has its
    /// model already.
    void openForAssistiveTechnology();

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
    enum class OpenedBy { Mouse, Key, AssistiveTechnology };

    void open(const QModelIndex& index, OpenedBy by);
    void finish(QComboBox& list, int chosen, const QPersistentModelIndex& index, OpenedBy by);

    QTableView& m_table;
    int m_column;
};

} // namespace vornadel
