// The easy-update box: choose an image, see whose it is, write it to the hub.

#include "app/AppDelegate.h"
#include "app/FilePanels.h"
#include "app/WindowReporter.h"
#include "editor/ToolTip.h"
#include "flows/FirmwareUpdate.h"

#include <QFile>
#include <QLineEdit>

namespace vornadel
{

void AppDelegate::chooseFw_EasyUpdate()
{
    const QString path = chooseFile(m_window.get());
    if (path.isEmpty()) {
        return;
    }
    txtFw_EasyUpdate->setText(path);
    txtFw_EasyUpdate->setToolTip(plainToolTip(path)); // it may be longer than the field
    FwImage_LoadFile(m_updateImage, QFile::encodeName(path).toStdString());
    if (!m_updateImage.loaded) { // a file that cannot be read leaves the image before it loaded
        showAlert("Firmware format error\n");
        return;
    }
    txtVID_EasyUpdate->setText(QString::fromStdString(FwImage_IdText(m_updateImage.vid)));
    txtSSPID_EasyUpdate->setText(QString::fromStdString(FwImage_IdText(m_updateImage.sspid)));
    txtHSPID_EasyUpdate->setText(QString::fromStdString(FwImage_IdText(m_updateImage.hspid)));
    txtVer_EasyUpdate->setText(QString::fromStdString(FwImage_IdText(m_updateImage.version)));
    txtManu_EasyUpdate->setText(QString::fromUtf8(m_updateImage.manufacturer.data()));
    txtPro_EasyUpdate->setText(QString::fromUtf8(m_updateImage.product.data()));
    txtSN_EasyUpdate->setText(QString::fromUtf8(m_updateImage.serial.data()));
}

void AppDelegate::updateFw_EasyUpdate()
{
    SetButtonStatus(false);
    startFlow([this] { updateFunc(); });
}

void AppDelegate::updateFunc()
{
    WindowReporter reporter(*this);
    updateFirmware(m_updateImage, textOfField(*txtFw_EasyUpdate), reporter);
    m_mainThread.postAndWait([this] { SetButtonStatus(true); });
}

std::string AppDelegate::textOfField(const QLineEdit& field)
{
    const auto text = std::make_shared<std::string>(); // outlives the wait where the window has
                                                       // closed meanwhile
    m_mainThread.postAndWait([text, &field] { *text = field.text().toStdString(); });
    return *text;
}

} // namespace vornadel
