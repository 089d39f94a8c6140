#include "app/PropertySelection.h"

#include "app/AppDelegate.h"
#include "app/ConsoleLog.h"
#include "app/Controls.h"
#include "app/FileNames.h"
#include "editor/ToolTip.h"
#include "props/Pages.h"
#include "props/PropertyChoice.h"
#include "props/PropertyFiles.h"

#include <QComboBox>
#include <QItemSelectionModel>
#include <QLineEdit>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QTableView>

#include <algorithm>
#include <iterator>

namespace vornadel
{

void PropertySelection::fill()
{
    for (const std::string_view page : kPropertyPages) {
        m_tool.cbPages->addItem(
            QString::fromUtf8(page.data(), static_cast<qsizetype>(page.size())));
    }
    for (const std::string& found : findPropertyFiles(nameBytes(m_tool.apPath))) {
        const QString path = shownName(found);
        ConsoleLog(path);
        m_tool.cbICType->addItem(path, QByteArray::fromStdString(found));
        m_tool.cbICType->setItemData(m_tool.cbICType->count() - 1, plainToolTip(path),
                                     Qt::ToolTipRole); // may be longer than the box
    }
    for (QComboBox* combo : {m_tool.cbICType, m_tool.cbPages}) {
        QObject::connect(combo, &QComboBox::currentIndexChanged, &m_tool,
                         [this, combo] { m_tool.comboBoxSelectionDidChange(combo); });
    }
    m_search.connectField();
    // The same page chosen again ends a search, too.
    QObject::connect(m_tool.cbPages, &QComboBox::activated, &m_tool, [this] {
        if (!m_tool.txtFind_Detail->text().isEmpty()) {
            m_tool.PageNameCombBox_SelectedChanged();
        }
    });
    m_tool.tbViewController->hexView().clicked = [this](int byte) { showByte(byte); };
}

void PropertySelection::selectionChanged(QComboBox* sender)
{
    if (sender == m_tool.cbICType) {
        m_tool.ICTypeCombBox_SelectedChanged();
    } else if (sender == m_tool.cbPages) {
        m_tool.PageNameCombBox_SelectedChanged();
    }
}

void PropertySelection::typeChanged()
{
    if (!m_image.loaded) {
        return; // the next read or load uses the selection
    }
    TableControllerRef->LoadIni();
    // The values stay the file's defaults until the next read or load.
    selectFirstPage();
}

void PropertySelection::selectFirstPage() { selectPage(0); }

void PropertySelection::selectPage(int page)
{
    {
        const QSignalBlocker quiet(m_tool.cbPages);
        m_tool.cbPages->setCurrentIndex(page);
    }
    m_tool.PageNameCombBox_SelectedChanged();
}

void PropertySelection::show(const PropItem& item)
{
    const PropItemList& rows = m_tool.tbViewController->propItemList;
    const auto isIt = [&item](const auto& each) { // the file may have been read again
        return each->key == item.key && each->propName == item.propName;
    };
    auto row = std::find_if(rows.begin(), rows.end(), isIt);
    if (row == rows.end()) {
        const int page = m_tool.cbPages->findText(QString::fromStdString(item.pageName));
        if (page < 0) {
            return;
        }
        selectPage(page);
        row = std::find_if(rows.begin(), rows.end(), isIt);
    }
    if (row != rows.end()) {
        // Without a look at the keys: Ctrl+Z would add the row to the selection.
        const QModelIndex index =
            m_tool.tbProperties_Detail->model()->index(static_cast<int>(row - rows.begin()), 0);
        m_tool.tbProperties_Detail->selectionModel()->setCurrentIndex(
            index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        m_tool.tbProperties_Detail->scrollTo(index);
    }
}

/// Selects the first property of a byte. The hex view stays where it is.
void PropertySelection::showByte(int byte)
{
    const PropItemList& items = m_tool.tbViewController->allItemList;
    const auto first = std::find_if(items.begin(), items.end(), [byte](const auto& item) {
        return item->addr == static_cast<std::uint32_t>(byte) && isOnAPage(*item);
    });
    if (first != items.end()) {
        QScrollBar& scrolling = *m_tool.txtViewBin_Detail->verticalScrollBar();
        const int scrolledTo = scrolling.value();
        show(**first);
        scrolling.setValue(scrolledTo);
    }
}

void PropertySelection::pageChanged()
{
    m_search.end();
    const QString selected = m_tool.cbPages->currentText();
    ConsoleLog("selected value:" + selected);
    TableViewController& table = *TableControllerRef;
    table.propItemList.clear();
    std::copy_if(
        table.allItemList.begin(), table.allItemList.end(), std::back_inserter(table.propItemList),
        [page = selected.toStdString()](const auto& item) { return item->pageName == page; });
    table.reloadTable();
    table.ShowBinary(0, 0);
    table.UpdateTxt_FwFlash();
}

} // namespace vornadel
