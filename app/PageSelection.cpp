// The two selections above the properties: which definition file, and which of its pages.

#include "app/AppDelegate.h"
#include "app/ConsoleLog.h"
#include "app/Controls.h"
#include "app/GeneralFunction.h"
#include "editor/ToolTip.h"
#include "props/Pages.h"
#include "props/PropertyFiles.h"

#include <QComboBox>
#include <QFile>
#include <QLineEdit>
#include <QSignalBlocker>

#include <algorithm>
#include <iterator>

namespace vornadel
{

void AppDelegate::connectPropertyEditor()
{
    const PropertyViews views{tbProperties_Detail, cbICType,       txtViewDesc_Detail,
                              txtViewBin_Detail,   txtVID_FwFlash, txtSSPID_FwFlash,
                              txtHSPID_FwFlash,    txtVer_FwFlash, txtManu_FwFlash,
                              txtPro_FwFlash,      txtSN_FwFlash,  txtContainerID_FwFlash};
    tbViewController = std::make_unique<TableViewController>(
        views, m_flashImage, QFile::encodeName(apPath).toStdString(),
        PropertyVoices{ConsoleLog, GeneralFunction::AlertString});
    fillSelections();
    for (QComboBox* combo : {cbICType, cbPages}) {
        connect(combo, &QComboBox::currentIndexChanged, this,
                [this, combo] { comboBoxSelectionDidChange(combo); });
    }
    for (QLineEdit* field : {txtVID_FwFlash, txtSSPID_FwFlash, txtHSPID_FwFlash, txtManu_FwFlash,
                             txtPro_FwFlash, txtSN_FwFlash, txtContainerID_FwFlash}) {
        connect(field, &QLineEdit::textEdited, this,
                [this, field] { controlTextDidChange(field); });
    }
}

void AppDelegate::fillSelections()
{
    for (const std::string_view page : kPropertyPages) {
        cbPages->addItem(QString::fromUtf8(page.data(), static_cast<qsizetype>(page.size())));
    }
    for (const std::string& found : findPropertyFiles(QFile::encodeName(apPath).toStdString())) {
        const QString path = QFile::decodeName(found.c_str());
        ConsoleLog(path);
        cbICType->addItem(path);
        cbICType->setItemData(cbICType->count() - 1, plainToolTip(path),
                              Qt::ToolTipRole); // may be longer than the box
    }
}

void AppDelegate::comboBoxSelectionDidChange(QComboBox* sender)
{
    if (sender == cbICType) {
        ICTypeCombBox_SelectedChanged();
    } else if (sender == cbPages) {
        PageNameCombBox_SelectedChanged();
    }
}

void AppDelegate::ICTypeCombBox_SelectedChanged()
{
    if (!m_flashImage.loaded) {
        return; // the next read or load looks at the selection itself
    }
    TableControllerRef->LoadIni();
    // The values stay the file's defaults: the image is not looked at before the next read or load.
    selectFirstPage();
}

void AppDelegate::selectFirstPage()
{
    {
        const QSignalBlocker quiet(cbPages);
        cbPages->setCurrentIndex(0);
    }
    PageNameCombBox_SelectedChanged();
}

void AppDelegate::PageNameCombBox_SelectedChanged()
{
    const QString selected = cbPages->currentText();
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
