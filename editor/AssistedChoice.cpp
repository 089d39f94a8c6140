#include "editor/AssistedChoice.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QItemSelectionModel>
#include <QKeyEvent>

#include <utility>

namespace vornadel
{

namespace
{

/// An index of the one selected row, if it is not the current row.
QModelIndex selectedApart(const QAbstractItemView& view)
{
    const QModelIndexList all = view.selectionModel()->selectedIndexes();
    for (const QModelIndex& each : all) {
        if (each.row() != all.front().row()) {
            return {};
        }
    }
    return all.isEmpty() || all.front().row() == view.currentIndex().row() ? QModelIndex()
                                                                           : all.front();
}

} // namespace

void watchAssistedSelection(QAbstractItemView& view,
                            std::function<void(const QModelIndex&)> selected)
{
    const auto look = [&view, selected = std::move(selected)] {
        if (const QModelIndex index = selectedApart(view); index.isValid()) {
            selected(index);
        }
    };
    QObject::connect(view.selectionModel(), &QItemSelectionModel::selectionChanged, &view,
                     [&view, look](const QItemSelection& added) {
                         if (!added.isEmpty()) { // the current index changes after the selection
                             QMetaObject::invokeMethod(&view, look, Qt::QueuedConnection);
                         }
                     });
}

void takeAssistedChoices(QComboBox& combo)
{
    QAbstractItemView& list = *combo.view();
    watchAssistedSelection(list, [&list](const QModelIndex& index) {
        if (list.isVisible()) {
            list.setCurrentIndex(index);
            QKeyEvent press(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
            QApplication::sendEvent(&list, &press);
        }
    });
}

} // namespace vornadel
