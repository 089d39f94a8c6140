// The easy-update box: choose an image, see whose it is, write it to the hub.

#include "app/AppDelegate.h"
#include "app/FilePanels.h"
#include "app/WindowReporter.h"
#include "flows/FirmwareUpdate.h"
#include "props/ui/ToolTip.h"

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
    m_worker.start([this] { updateFunc(); });
}

void AppDelegate::updateFunc() { runUpdate(m_updateImage, *txtFw_EasyUpdate); }

void AppDelegate::runUpdate(const FwImage& image, const QLineEdit& nameField)
{
    const auto name = std::make_shared<std::string>();
    m_mainThread.postAndWait([name, &nameField] { *name = nameField.text().toStdString(); });
    WindowReporter reporter(*this);
    updateFirmware(image, *name, reporter);
    m_mainThread.postAndWait([this] { SetButtonStatus(true); });
}

} // namespace vornadel
