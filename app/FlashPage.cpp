// The flash page's four buttons: read the hub's flash or a file, erase the flash, save to a file.

#include "app/AppDelegate.h"
#include "app/ConsoleLog.h"
#include "app/Controls.h"
#include "app/FilePanels.h"
#include "app/GeneralFunction.h"
#include "app/WindowReporter.h"
#include "base/GenFun.h"
#include "firmware/IdentityEdit.h"
#include "firmware/ImageFile.h"
#include "flows/FlashErase.h"
#include "flows/FlashRead.h"

#include <QLineEdit>

#include <string>
#include <vector>

namespace vornadel
{

namespace
{

std::string textOf(const QLineEdit* field) { return field->text().toStdString(); }

} // namespace

void AppDelegate::read_FwFlash()
{
    SetButtonStatus(false);
    startFlow([this] { readFunc_FwFlash(); });
}

void AppDelegate::readFunc_FwFlash()
{
    std::vector<std::uint8_t> flash;
    WindowReporter reporter(*this);
    readFlash(
        flash, reporter,
        [this, &flash] {
            // On the main thread together: the image is the identity fields' and the table's there.
            m_mainThread.postAndWait([this, &flash] {
                FwImage_Parse(m_flashImage, flash.data(), static_cast<std::int32_t>(flash.size()));
                readFinished_FwFlash();
            });
        },
        [this] { m_mainThread.postAndWait([this] { SetButtonStatus(true); }); });
}

void AppDelegate::readFinished_FwFlash()
{
    if (!m_flashImage.loaded) {
        txtVID_FwFlash->setText("Err");
        return;
    }
    tbViewController->LoadIni();
    tbViewController->RefreshCurValues();
    selectFirstPage();
}

void AppDelegate::load_FwFlash()
{
    const QString path = chooseFile(m_window.get());
    if (!path.isEmpty()) {
        FwImage_LoadFile(m_flashImage, QFile::encodeName(path).toStdString());
        if (m_flashImage.loaded) { // a file that cannot be read leaves the image before it loaded
            tbViewController->LoadIni();
            tbViewController->RefreshCurValues_8Bit();
        } else {
            tbViewController->allItemList.clear();
            txtViewBin_Detail->setPlainText("Binary Data\n");
            showAlert("Firmware format error\n");
        }
    }
    selectFirstPage();
}

void AppDelegate::erase_FwFlash()
{
    SetButtonStatus(false);
    startFlow([this] { eraseFunc_FwFlash(); });
}

void AppDelegate::eraseFunc_FwFlash()
{
    WindowReporter reporter(*this);
    eraseFlash(reporter);
    m_mainThread.postAndWait([this] { SetButtonStatus(true); });
}

void AppDelegate::save_FwFlash()
{
    if (!m_flashImage.loaded) {
        GeneralFunction::AlertString("No Flash Data");
        return;
    }
    const IdentityTexts texts{textOf(txtVID_FwFlash),   textOf(txtSSPID_FwFlash),
                              textOf(txtHSPID_FwFlash), textOf(txtVer_FwFlash),
                              textOf(txtManu_FwFlash),  textOf(txtPro_FwFlash),
                              textOf(txtSN_FwFlash)};
    ConsoleLog(QString::asprintf("Length in textfield : %zu-%zu-%zu-%zu-%zu-%zu-%zu\n",
                                 texts.vid.size(), texts.sspid.size(), texts.hspid.size(),
                                 texts.version.size(), texts.manufacturer.size(),
                                 texts.product.size(), texts.serial.size()));
    if (!texts.fit()) {
        GeneralFunction::AlertString("Data Length Error");
        return;
    }
    FwImage_SetIds(m_flashImage, texts);
    FwImage_SetStrings(m_flashImage, texts.manufacturer, texts.product, texts.serial);
    GF_PrintHex(m_flashImage.strings, static_cast<std::int32_t>(m_flashImage.stringsLength));
    openSavePanel();
}

void AppDelegate::openSavePanel()
{
    auto* panel = new SavePanel(m_window.get());
    connect(panel, &QFileDialog::fileSelected, this, [this](const QString& path) {
        std::string problem;
        saveFileAtomically(QFile::encodeName(path).toStdString(), m_flashImage.data.get(),
                           static_cast<std::size_t>(m_flashImage.size), problem);
        ConsoleLog(path);
        if (!problem.empty()) {
            ConsoleLog(QString::fromStdString(problem)); // shown nowhere else
        }
    });
    panel->open();
}

} // namespace vornadel
