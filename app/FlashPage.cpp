#include "app/FlashPage.h"

#include "app/AppDelegate.h"
#include "app/ConsoleLog.h"
#include "app/Controls.h"
#include "app/FileNames.h"
#include "app/FilePanels.h"
#include "app/GeneralFunction.h"
#include "app/ImageInputs.h"
#include "app/WindowReporter.h"
#include "base/GenFun.h"
#include "base/WholeFile.h"
#include "editor/ImageText.h"
#include "firmware/IdentityEdit.h"
#include "flows/FlashErase.h"
#include "flows/FlashRead.h"

#include <QLineEdit>

#include <cctype>
#include <string>
#include <vector>

namespace vornadel
{

namespace
{

/// "PRODUCT_VERSION.BIN" of an image, in characters that every file system takes.
QString suggestedName(const FwImage& image)
{
    QString name;
    for (const char character : std::string(image.product.data())) {
        const bool plain = std::isalnum(static_cast<unsigned char>(character)) != 0 ||
                           character == '-' || (character == '.' && !name.isEmpty());
        name += QChar::fromLatin1(plain ? character : '_');
    }
    const std::string version = FwImage_IdText(image.version);
    return (name.isEmpty() ? "Firmware" : name) +
           (version.empty() ? "" : '_' + QString::fromStdString(version)) + ".BIN";
}

} // namespace

void FlashPage::connectBox()
{
    takeImages(*m_tool.boxFwFlash, *m_tool.btnLoad_FwFlash, m_tool.recentFiles,
               [this](const std::string& path) { open(path); });
}

void FlashPage::read()
{
    m_tool.SetButtonStatus(false);
    m_tool.startFlow([this] { m_tool.readFunc_FwFlash(); });
}

void FlashPage::runRead()
{
    std::vector<std::uint8_t> flash;
    WindowReporter reporter(m_tool, [this, &flash] {
        // Parsed on the main thread, too: the identity fields and the table use the image there.
        FwImage_Parse(m_image, flash.data(), static_cast<std::int32_t>(flash.size()));
        m_tool.tbViewController->history().replaced();
        m_tool.readFinished_FwFlash();
    });
    readFlash(flash, reporter);
}

void FlashPage::readFinished()
{
    if (!m_image.loaded) {
        m_tool.txtVID_FwFlash->setText("Err");
        return;
    }
    m_tool.tbViewController->LoadIni();
    m_tool.tbViewController->RefreshCurValues();
    m_tool.selectFirstPage();
}

void FlashPage::load()
{
    const std::string path =
        chooseFile(m_tool.window(), m_tool.recentFiles.folder(RecentFiles::Panel::Load));
    if (path.empty()) {
        m_tool.selectFirstPage();
    } else {
        open(path);
    }
}

void FlashPage::open(const std::string& path)
{
    const bool loaded = FwImage_LoadFile(m_image, path);
    m_tool.recentFiles.add(RecentFiles::Panel::Load, path, loaded);
    if (loaded || !m_image.loaded) {
        m_tool.tbViewController->history().replaced();
    }
    if (m_image.loaded) { // an unreadable file leaves the previous image loaded
        m_tool.tbViewController->LoadIni();
        m_tool.tbViewController->RefreshCurValues_8Bit();
    } else {
        m_tool.tbViewController->allItemList.clear();
        m_tool.txtViewBin_Detail->setPlainText("Binary Data\n");
        AppDelegate::showAlert("Firmware format error\n");
    }
    m_tool.selectFirstPage();
}

void FlashPage::erase()
{
    m_tool.SetButtonStatus(false);
    m_tool.startFlow([this] { m_tool.eraseFunc_FwFlash(); });
}

void FlashPage::runErase()
{
    WindowReporter reporter(m_tool);
    eraseFlash(reporter);
}

void FlashPage::save()
{
    if (!m_image.loaded) {
        GeneralFunction::AlertString("No Flash Data");
        return;
    }
    const IdentityTexts texts{idText(*m_tool.txtVID_FwFlash),     idText(*m_tool.txtSSPID_FwFlash),
                              idText(*m_tool.txtHSPID_FwFlash),   idText(*m_tool.txtVer_FwFlash),
                              imageText(*m_tool.txtManu_FwFlash), imageText(*m_tool.txtPro_FwFlash),
                              imageText(*m_tool.txtSN_FwFlash)};
    ConsoleLog(QString::asprintf("Length in textfield : %zu-%zu-%zu-%zu-%zu-%zu-%zu\n",
                                 texts.vid.size(), texts.sspid.size(), texts.hspid.size(),
                                 texts.version.size(), texts.manufacturer.size(),
                                 texts.product.size(), texts.serial.size()));
    if (!texts.fit()) {
        GeneralFunction::AlertString("Data Length Error");
        return;
    }
    FwImage_SetIds(m_image, texts);
    FwImage_SetStrings(m_image, texts.manufacturer, texts.product, texts.serial);
    m_tool.tbViewController->history().edited();
    GF_PrintHex(m_image.strings, static_cast<std::int32_t>(m_image.stringsLength));
    openSavePanel();
}

void FlashPage::openSavePanel()
{
    auto* panel = new SavePanel(m_tool.window());
    startIn(*panel, m_tool.recentFiles.folder(RecentFiles::Panel::Save));
    panel->suggest(suggestedName(m_image));
    QObject::connect(panel, &QFileDialog::fileSelected, &m_tool, [this](const QString& path) {
        const std::string file = chosenPath(path);
        std::string problem;
        const bool saved = saveWholeFile(
            file, {m_image.data.get(), static_cast<std::size_t>(m_image.size)}, problem);
        m_tool.recentFiles.add(RecentFiles::Panel::Save, file, saved);
        ConsoleLog(path);
        if (saved) {
            m_tool.tbViewController->history().saved();
        } else {
            ConsoleLog(QString::fromStdString(problem)); // shown nowhere else
        }
    });
    panel->open();
}

} // namespace vornadel
