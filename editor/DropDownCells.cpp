#include "editor/DropDownCells.h"

#include "editor/AssistedChoice.h"

#include <QApplication>
#include <QComboBox>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QTableView>

#include <functional>
#include <utility>

namespace vornadel
{

namespace
{

constexpr int kNothingChosen = -1;

/// Draws a drop-down in a table. Its text has the whole height, because a row of the table is too
/// low for the margins that the style leaves above and below.
void drawDropDown(QPainter& painter, const QStyleOptionComboBox& box, const QWidget& widget)
{
    const QStyle& style = *widget.style();
    style.drawComplexControl(QStyle::CC_ComboBox, &box, &painter, &widget);
    QRect room =
        style.subControlRect(QStyle::CC_ComboBox, &box, QStyle::SC_ComboBoxEditField, &widget);
    room.setTop(box.rect.top());
    room.setBottom(box.rect.bottom());
    style.drawItemText(&painter, room.adjusted(1, 0, -1, 0), Qt::AlignLeft | Qt::AlignVCenter,
                       box.palette, box.state.testFlag(QStyle::State_Enabled),
                       box.fontMetrics.elidedText(box.currentText, Qt::ElideRight, room.width()),
                       QPalette::ButtonText);
}

/// The list of a cell while it is open. Reports when it has closed, whatever closed it.
class OpenList final : public QComboBox
{
public:
    explicit OpenList(QWidget* parent) : QComboBox(parent)
    {
        connect(this, &QComboBox::activated, [this](int position) { m_chosen = position; });
        takeAssistedChoices(*this);
    }

    void watchClosing(std::function<void(int chosen)> closed)
    {
        m_closed = std::move(closed);
        view()->window()->installEventFilter(this);
    }

protected:
    void hideEvent(QHideEvent* event) override
    {
        if (window()->focusWidget() == this) {
            parentWidget()->setFocus(); // otherwise Qt passes it on to another control
        }
        QComboBox::hideEvent(event);
    }

    void paintEvent(QPaintEvent* /*event*/) override
    {
        QPainter painter(this);
        QStyleOptionComboBox box;
        initStyleOption(&box);
        drawDropDown(painter, box, *this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Hide && m_closed) {
            // Reports the choice after the list has closed.
            QMetaObject::invokeMethod(
                this, [this, closed = std::exchange(m_closed, {})] { closed(m_chosen); },
                Qt::QueuedConnection);
        }
        return QComboBox::eventFilter(watched, event);
    }

private:
    int m_chosen = kNothingChosen;
    std::function<void(int)> m_closed;
};

bool isOpeningKey(const QKeyEvent& event)
{
    switch (event.key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space:
    case Qt::Key_F2:
        return true;
    case Qt::Key_Down:
        return (event.modifiers() & Qt::AltModifier) != 0;
    default:
        return false;
    }
}

} // namespace

DropDownCells::DropDownCells(QTableView& table, int column) : m_table(table), m_column(column)
{
    table.setItemDelegateForColumn(column, this);
    table.setEditTriggers(QAbstractItemView::NoEditTriggers);
    table.installEventFilter(this);
    connect(&table, &QTableView::clicked, this, [this](const QModelIndex& index) {
        // A click with a modifier selects more rows.
        if (index.column() == m_column && QApplication::keyboardModifiers() == Qt::NoModifier) {
            open(index, OpenedBy::Mouse);
        }
    });
}

void DropDownCells::openForAssistiveTechnology()
{
    watchAssistedSelection(m_table, [this](const QModelIndex& index) {
        open(index.siblingAtColumn(m_column), OpenedBy::AssistiveTechnology);
    });
}

void DropDownCells::paint(QPainter* painter, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const
{
    QStyleOptionViewItem cell = option;
    initStyleOption(&cell, index);
    const QStyle& style = *m_table.style();
    style.drawPrimitive(QStyle::PE_PanelItemViewItem, &cell, painter, &m_table);

    QStyleOptionComboBox box;
    box.initFrom(&m_table);
    box.rect = cell.rect.adjusted(1, 1, -1, -1);
    box.state = cell.state & QStyle::State_Active;
    box.state.setFlag(QStyle::State_Enabled, !index.data(LockedRole).toBool());
    box.state.setFlag(QStyle::State_HasFocus, cell.state.testFlag(QStyle::State_HasFocus));
    box.editable = false;
    box.frame = true;
    box.fontMetrics = cell.fontMetrics;
    if (const QVariant text = index.data(Qt::ForegroundRole); text.isValid()) {
        box.palette.setBrush(QPalette::ButtonText, qvariant_cast<QBrush>(text));
    }
    box.currentText = cell.text;
    painter->save();
    painter->setFont(cell.font);
    drawDropDown(*painter, box, m_table);
    painter->restore();
}

QWidget* DropDownCells::createEditor(QWidget* parent, const QStyleOptionViewItem& /*option*/,
                                     const QModelIndex& index) const
{
    auto* list = new OpenList(parent);
    list->addItems(index.data(EntriesRole).toStringList());
    list->setCurrentIndex(index.data(ChosenRole).toInt());
    list->setMaxVisibleItems(16);
    list->view()->setAccessibleName(index.siblingAtColumn(0).data().toString());
    return list;
}

void DropDownCells::setEditorData(QWidget* /*editor*/, const QModelIndex& /*index*/) const {}

// The choice goes to the model after the list has closed, because the model may show an alert.
void DropDownCells::setModelData(QWidget* /*editor*/, QAbstractItemModel* /*model*/,
                                 const QModelIndex& /*index*/) const
{
}

bool DropDownCells::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != &m_table) {
        return QStyledItemDelegate::eventFilter(watched, event);
    }
    const QModelIndex current = m_table.currentIndex();
    if (event->type() == QEvent::KeyPress && current.isValid() &&
        isOpeningKey(*static_cast<QKeyEvent*>(event))) {
        open(current.siblingAtColumn(m_column), OpenedBy::Key);
        return true;
    }
    return false;
}

void DropDownCells::open(const QModelIndex& index, OpenedBy by)
{
    if (!index.flags().testFlag(Qt::ItemIsEditable) || m_table.indexWidget(index) != nullptr) {
        return;
    }
    m_table.scrollTo(index);
    m_table.edit(index);
    auto* list = dynamic_cast<OpenList*>(m_table.indexWidget(index));
    if (list == nullptr) {
        return;
    }
    if (by == OpenedBy::Mouse) {
        // Opened by a press, like any other drop-down, so that the second click of a double click
        // chooses nothing.
        const QPointF at = list->rect().center();
        QMouseEvent press(QEvent::MouseButtonPress, at, list->mapToGlobal(at), Qt::LeftButton,
                          Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(list, &press);
    } else {
        list->showPopup();
    }
    list->watchClosing([this, list, by, at = QPersistentModelIndex(index)](int chosen) {
        finish(*list, chosen, at, by);
    });
}

void DropDownCells::finish(QComboBox& list, int chosen, const QPersistentModelIndex& index,
                           OpenedBy by)
{
    if (m_table.indexWidget(index) != &list) {
        return; // the rows have changed meanwhile, and the table has removed the list
    }
    emit closeEditor(&list);
    if (by == OpenedBy::AssistiveTechnology) {
        // So that it can select any row next. The table has made a row current with its focus.
        m_table.clearSelection();
        m_table.selectionModel()->clearCurrentIndex();
    }
    if (chosen != kNothingChosen) {
        m_table.model()->setData(index, chosen, Qt::EditRole);
    }
}

} // namespace vornadel
