#include "editor/CopyRows.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QItemSelectionModel>
#include <QShortcut>
#include <QTableView>

namespace vornadel
{

namespace
{

void copyRows(const QTableView& table)
{
    const QAbstractItemModel& model = *table.model();
    QString text;
    for (int row = 0; row < model.rowCount(); ++row) {
        if (!table.selectionModel()->isRowSelected(row)) {
            continue;
        }
        QStringList cells;
        for (int column = 0; column < model.columnCount(); ++column) {
            cells.append(model.index(row, column).data().toString());
        }
        text += cells.join('\t') + '\n';
    }
    if (!text.isEmpty()) {
        QGuiApplication::clipboard()->setText(text);
    }
}

} // namespace

void copyRowsByKey(QTableView& table)
{
    auto* const key = new QShortcut(QKeySequence::Copy, &table);
    key->setContext(Qt::WidgetShortcut);
    QObject::connect(key, &QShortcut::activated, &table, [&table] { copyRows(table); });
}

} // namespace vornadel
