#include "app/PropertySelection.h"

#include "app/AppDelegate.h"
#include "app/ConsoleLog.h"
#include "app/FileNames.h"
#include "editor/ToolTip.h"
#include "props/Pages.h"
#include "props/PropertyFiles.h"

#include <QComboBox>
#include <QSignalBlocker>

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

void PropertySelection::selectFirstPage()
{
    {
        const QSignalBlocker quiet(m_tool.cbPages);
        m_tool.cbPages->setCurrentIndex(0);
    }
    m_tool.PageNameCombBox_SelectedChanged();
}

void PropertySelection::pageChanged()
{
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
