#include "app/EasyUpdatePage.h"

#include "app/AppDelegate.h"
#include "app/FilePanels.h"
#include "app/ImageInputs.h"
#include "app/WindowReporter.h"
#include "base/GenFun.h"
#include "editor/ImageText.h"
#include "firmware/IdentityEdit.h"
#include "flows/FirmwareUpdate.h"
#include "hub/SupportedIds.h"

#include <QLineEdit>

#include <string>

namespace vornadel
{

namespace
{

std::uint16_t wordAt(const std::uint8_t* position)
{
    return static_cast<std::uint16_t>(position[0] << 8 | position[1]);
}

} // namespace

void EasyUpdatePage::connectBox()
{
    takeImages(*m_tool.boxEasyUpdate, *m_tool.btnSelect_EasyUpdate, m_tool.recentFiles,
               [this](const std::string& path) { open(path); });
}

void EasyUpdatePage::choose()
{
    const std::string path =
        chooseFile(m_tool.window(), m_tool.recentFiles.folder(RecentFiles::Panel::Update));
    if (!path.empty()) {
        open(path);
    }
}

void EasyUpdatePage::open(const std::string& path)
{
    const bool loaded = m_file.load(m_image, path, *m_tool.txtFw_EasyUpdate);
    m_tool.recentFiles.add(RecentFiles::Panel::Update, path, loaded);
    if (!m_image.loaded) { // an unreadable file leaves the previous image loaded
        AppDelegate::showAlert("Firmware format error\n");
        return;
    }
    m_tool.txtVID_EasyUpdate->setText(QString::fromStdString(FwImage_IdText(m_image.vid)));
    m_tool.txtSSPID_EasyUpdate->setText(QString::fromStdString(FwImage_IdText(m_image.sspid)));
    m_tool.txtHSPID_EasyUpdate->setText(QString::fromStdString(FwImage_IdText(m_image.hspid)));
    m_tool.txtVer_EasyUpdate->setText(QString::fromStdString(FwImage_IdText(m_image.version)));
    showImageText(*m_tool.txtManu_EasyUpdate, m_image.manufacturer.data());
    showImageText(*m_tool.txtPro_EasyUpdate, m_image.product.data());
    showImageText(*m_tool.txtSN_EasyUpdate, m_image.serial.data());
}

void EasyUpdatePage::start()
{
    m_tool.SetButtonStatus(false);
    m_tool.startFlow([this] { m_tool.updateFunc(); });
}

void EasyUpdatePage::run()
{
    WindowReporter reporter(m_tool);
    updateFirmware(m_image, m_tool.textOfField(*m_tool.txtFw_EasyUpdate), reporter);
}

bool EasyUpdatePage::takeFields()
{
    const IdentityTexts texts{
        idText(*m_tool.txtVID_EasyUpdate),     idText(*m_tool.txtSSPID_EasyUpdate),
        idText(*m_tool.txtHSPID_EasyUpdate),   idText(*m_tool.txtVer_EasyUpdate),
        imageText(*m_tool.txtManu_EasyUpdate), imageText(*m_tool.txtPro_EasyUpdate),
        imageText(*m_tool.txtSN_EasyUpdate)};
    if (!m_image.loaded || !texts.fit()) {
        return false;
    }
    FwImage_SetIds(m_image, texts);
    if (!FindSupportedTriple(wordAt(m_image.vid), wordAt(m_image.sspid), wordAt(m_image.hspid))) {
        return false;
    }
    FwImage_SetStrings(m_image, texts.manufacturer, texts.product, texts.serial);
    GF_PrintHex(m_image.strings, static_cast<std::int32_t>(m_image.stringsLength));
    return true;
}

} // namespace vornadel
