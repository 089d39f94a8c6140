// The identity fields: what a person types goes into the flash image with every keystroke.

#include "app/AppDelegate.h"
#include "app/ConsoleLog.h"
#include "app/GeneralFunction.h"
#include "base/GenFun.h"
#include "firmware/IdentityEdit.h"
#include "hub/SupportedIds.h"

#include <QLineEdit>

#include <string>

namespace vornadel
{

namespace
{

std::string textOf(const QLineEdit* field) { return field->text().toStdString(); }

void logBytes(const char* name, const std::uint8_t* position)
{
    ConsoleLog(QString::asprintf("Old %s : %s", name, FwImage_IdText(position).c_str()));
}

/// Leaves the cursor where it is, as long as there is a text.
void putText(QLineEdit* field, const QString& text)
{
    const int cursor = field->cursorPosition();
    field->setText(text);
    field->setCursorPosition(cursor);
}

/// A character outside the basic plane is two units: both go.
void removeLastCharacter(QLineEdit* field)
{
    QString text = field->text();
    const bool pair = text.size() > 1 && text.back().isLowSurrogate();
    text.chop(pair ? 2 : 1);
    putText(field, text);
}

std::uint16_t wordAt(const std::uint8_t* position)
{
    return static_cast<std::uint16_t>(position[0] << 8 | position[1]);
}

} // namespace

void AppDelegate::controlTextDidChange(QLineEdit* field)
{
    struct Row {
        QLineEdit* WindowControls::*field;
        void (AppDelegate::*changed)(QLineEdit*);
    };
    static constexpr Row kRows[] = {
        {&WindowControls::txtVID_FwFlash, &AppDelegate::VID_HSPID_SSPID_Changed_FwFlash},
        {&WindowControls::txtSSPID_FwFlash, &AppDelegate::VID_HSPID_SSPID_Changed_FwFlash},
        {&WindowControls::txtHSPID_FwFlash, &AppDelegate::VID_HSPID_SSPID_Changed_FwFlash},
        {&WindowControls::txtManu_FwFlash, &AppDelegate::textDidChange_ManuProSN},
        {&WindowControls::txtPro_FwFlash, &AppDelegate::textDidChange_ManuProSN},
        {&WindowControls::txtSN_FwFlash, &AppDelegate::textDidChange_ManuProSN},
        {&WindowControls::txtContainerID_FwFlash, &AppDelegate::textDidChange_ManuProSN},
    };
    ConsoleLog(field->text());
    for (const Row& row : kRows) {
        if (this->*row.field == field) {
            (this->*row.changed)(field);
        }
    }
}

void AppDelegate::VID_HSPID_SSPID_Changed_FwFlash(QLineEdit* field)
{
    if (!m_flashImage.loaded) {
        field->clear();
        GeneralFunction::AlertString("No Flash Data");
        return;
    }
    logBytes("VID", m_flashImage.vid);
    logBytes("SSPID", m_flashImage.sspid);
    logBytes("HSPID", m_flashImage.hspid);
    ConsoleLog("VID: " + txtVID_FwFlash->text() + "    SSPID1: " + txtSSPID_FwFlash->text() +
               "    HSPID1: " + txtHSPID_FwFlash->text() + "\n");

    struct Row {
        QLineEdit* field;
        const char* alert;
    };
    for (const Row& row : {Row{txtVID_FwFlash, "VID length should be 4."},
                           Row{txtSSPID_FwFlash, "SSPID length should be 4."},
                           Row{txtHSPID_FwFlash, "HSPID length should be 4."}}) {
        const QString text = row.field->text();
        if (text.size() > static_cast<qsizetype>(kIdDigits)) {
            putText(row.field, text.left(kIdDigits));
            GeneralFunction::AlertString(row.alert);
            break; // one field per event
        }
    }
    if (FwImage_EditIds(m_flashImage, textOf(txtVID_FwFlash), textOf(txtSSPID_FwFlash),
                        textOf(txtHSPID_FwFlash))) {
        ConsoleLog("Not Same");
    }
    tbViewController->ShowBinary(kIdsBegin, kIdsEnd);
    tbViewController->reloadTable();
}

void AppDelegate::textDidChange_ManuProSN(QLineEdit* field)
{
    if (!m_flashImage.loaded) {
        field->clear();
        GeneralFunction::AlertString("No Flash Data");
        return;
    }
    ConsoleLog(txtManu_FwFlash->text() + "\n" + txtPro_FwFlash->text() + "\n" +
               txtSN_FwFlash->text() + "\n" + txtContainerID_FwFlash->text() + "\n");
    if (textOf(txtManu_FwFlash).size() + textOf(txtPro_FwFlash).size() +
            textOf(txtSN_FwFlash).size() >
        kMostCharacters) {
        removeLastCharacter(field);
    }
    const std::uint8_t changed =
        FwImage_EditTexts(m_flashImage, textOf(txtManu_FwFlash), textOf(txtPro_FwFlash),
                          textOf(txtSN_FwFlash), textOf(txtContainerID_FwFlash));
    struct Word {
        std::uint8_t flag;
        const char* text;
    };
    for (const Word& word :
         {Word{kManufacturerChanged, "Change-Manu"}, Word{kProductChanged, "Change-Pro"},
          Word{kSerialChanged, "Change-SN"}, Word{kContainerIdChanged, "Change-ContID"}}) {
        if ((changed & word.flag) != 0) {
            ConsoleLog(word.text);
        }
    }
    tbViewController->ShowBinary(kTextsBegin, kTextsEnd);
    tbViewController->reloadTable();
}

bool AppDelegate::modifyFwBuffer_from_UI()
{
    const IdentityTexts texts{textOf(txtVID_EasyUpdate),   textOf(txtSSPID_EasyUpdate),
                              textOf(txtHSPID_EasyUpdate), textOf(txtVer_EasyUpdate),
                              textOf(txtManu_EasyUpdate),  textOf(txtPro_EasyUpdate),
                              textOf(txtSN_EasyUpdate)};
    if (!m_updateImage.loaded || !texts.fit()) {
        return false;
    }
    FwImage_SetIds(m_updateImage, texts);
    if (!FindSupportedTriple(wordAt(m_updateImage.vid), wordAt(m_updateImage.sspid),
                             wordAt(m_updateImage.hspid))) {
        return false;
    }
    FwImage_SetStrings(m_updateImage, texts.manufacturer, texts.product, texts.serial);
    GF_PrintHex(m_updateImage.strings, static_cast<std::int32_t>(m_updateImage.stringsLength));
    return true;
}

} // namespace vornadel
