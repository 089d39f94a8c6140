// The flash page's four buttons: read the hub's flash or a file, erase the flash, save to a file.

#include "app/AppDelegate.h"
#include "app/ConsoleLog.h"
#include "app/Controls.h"
#include "app/GeneralFunction.h"
#include "app/WindowReporter.h"
#include "firmware/IdentityEdit.h"
#include "firmware/ImageFile.h"
#include "flows/FlashErase.h"
#include "flows/FlashRead.h"
#include "props/GenFun.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QLineEdit>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

namespace vornadel
{

namespace
{

constexpr std::size_t kIdLength = 4;
constexpr std::size_t kMostCharacters = 29; // of the three strings together
constexpr const char* kImageSuffix = "BIN";

/// Asks where to save. A name gets the one suffix there is before it is looked at whether the file exists.
class SavePanel final : public QFileDialog
{
public:
    explicit SavePanel(QWidget* window)
        : QFileDialog(window, "Choose the path to save the *.Bin file", {}, "BIN (*.BIN *.bin)")
    {
        setAcceptMode(AcceptSave);
        setLabelText(FileName, "save as");
        setDefaultSuffix(kImageSuffix);
        setOption(HideNameFilterDetails, false);
        setAttribute(Qt::WA_DeleteOnClose);
    }

protected:
    void accept() override
    {
        const QFileInfo chosen(selectedFiles().value(0));
        if (!chosen.isDir() && chosen.suffix().compare(kImageSuffix, Qt::CaseInsensitive) != 0) {
            // selectFile() leaves the name alone while the focus is there.
            findChild<QLineEdit*>("fileNameEdit")->setText(chosen.filePath() + "." + kImageSuffix);
        }
        QFileDialog::accept();
    }
};

} // namespace

void AppDelegate::read_FwFlash()
{
    SetButtonStatus(false);
    m_worker.start([this] { readFunc_FwFlash(); });
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
    const QString path = QFileDialog::getOpenFileName(m_window.get());
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
    m_worker.start([this] { eraseFunc_FwFlash(); });
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
    std::array<std::string, 7> texts;
    const std::array<const QLineEdit*, 7> fields = {txtVID_FwFlash, txtSSPID_FwFlash, txtHSPID_FwFlash,
                                                    txtVer_FwFlash, txtManu_FwFlash,  txtPro_FwFlash,
                                                    txtSN_FwFlash};
    std::transform(fields.begin(), fields.end(), texts.begin(),
                   [](const QLineEdit* field) { return field->text().toStdString(); });
    const auto& [vid, sspid, hspid, version, manufacturer, product, serial] = texts;
    ConsoleLog(QString::asprintf("Length in textfield : %zu-%zu-%zu-%zu-%zu-%zu-%zu\n", vid.size(),
                                 sspid.size(), hspid.size(), version.size(), manufacturer.size(),
                                 product.size(), serial.size()));
    const bool idsFit = std::all_of(texts.begin(), texts.begin() + 4,
                                    [](const std::string& id) { return id.size() == kIdLength; });
    if (!idsFit || manufacturer.size() + product.size() + serial.size() > kMostCharacters) {
        GeneralFunction::AlertString("Data Length Error");
        return;
    }
    FwImage_SetIdText(m_flashImage.vid, vid);
    FwImage_SetIdText(m_flashImage.sspid, sspid);
    FwImage_SetIdText(m_flashImage.hspid, hspid);
    FwImage_SetIdText(m_flashImage.version, version);
    FwImage_SetStrings(m_flashImage, manufacturer, product, serial);
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
