#include "app/PropertySearch.h"

#include "app/AppDelegate.h"
#include "app/Controls.h"
#include "props/PropertyChoice.h"

#include <QLineEdit>
#include <QShortcut>
#include <QTableView>

#include <algorithm>
#include <iterator>

namespace vornadel
{

void PropertySearch::connectField()
{
    QLineEdit* const field = m_tool.txtFind_Detail;
    field->setPlaceholderText("Find a property");
    field->hide();
    QObject::connect(field, &QLineEdit::textEdited, &m_tool,
                     [this](const QString& text) { find(text); });
    QObject::connect(field, &QLineEdit::returnPressed, &m_tool, [this] { goToTable(); });
    // The shortcut is off while the box is hidden, as in scalar mode.
    QObject::connect(new QShortcut(QKeySequence::Find, m_tool.boxDetail), &QShortcut::activated,
                     &m_tool, [this] { begin(); });
    struct Key {
        Qt::Key key;
        void (PropertySearch::*action)();
    };
    for (const Key& each : {Key{Qt::Key_Escape, &PropertySearch::leave},
                            Key{Qt::Key_Down, &PropertySearch::goToTable}}) {
        auto* const key = new QShortcut(each.key, field);
        key->setContext(Qt::WidgetShortcut);
        QObject::connect(key, &QShortcut::activated, &m_tool,
                         [this, action = each.action] { (this->*action)(); });
    }
}

void PropertySearch::begin()
{
    m_tool.txtFind_Detail->show();
    m_tool.txtFind_Detail->setFocus(Qt::ShortcutFocusReason);
    m_tool.txtFind_Detail->selectAll();
}

void PropertySearch::find(const QString& text)
{
    if (text.isEmpty()) {
        m_tool.PageNameCombBox_SelectedChanged();
        return;
    }
    TableViewController& table = *m_tool.tbViewController;
    table.propItemList.clear();
    std::copy_if(
        table.allItemList.begin(), table.allItemList.end(), std::back_inserter(table.propItemList),
        [&text](const auto& item) {
            return isOnAPage(*item) &&
                   QString::fromStdString(item->propName).contains(text, Qt::CaseInsensitive);
        });
    table.reloadTable();
}

void PropertySearch::goToTable()
{
    QTableView& table = *m_tool.tbProperties_Detail;
    table.setFocus(Qt::ShortcutFocusReason);
    if (table.selectionModel()->selectedRows().isEmpty()) {
        table.selectRow(0);
    }
}

void PropertySearch::leave()
{
    m_tool.tbProperties_Detail->setFocus(Qt::ShortcutFocusReason);
    if (m_tool.txtFind_Detail->text().isEmpty()) {
        end(); // the page is shown already
    } else {
        m_tool.PageNameCombBox_SelectedChanged();
    }
}

void PropertySearch::end()
{
    QLineEdit& field = *m_tool.txtFind_Detail;
    field.clear();
    // A field that is hidden under the hands of its user would pass the next keys on to another. It
    // may be in use although another window is active, so hasFocus() is not enough.
    field.setVisible(field.window()->focusWidget() == &field);
}

} // namespace vornadel
