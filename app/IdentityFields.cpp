#include "app/IdentityFields.h"

#include "app/AppDelegate.h"
#include "app/ConsoleLog.h"
#include "app/GeneralFunction.h"
#include "firmware/IdentityEdit.h"

#include <QLineEdit>

#include <string>

namespace vornadel
{

namespace
{

struct Row {
    QLineEdit* WindowControls::*field;
    void (AppDelegate::*changed)(QLineEdit*);
};

constexpr Row kRows[] = {
    {&WindowControls::txtVID_FwFlash, &AppDelegate::VID_HSPID_SSPID_Changed_FwFlash},
    {&WindowControls::txtSSPID_FwFlash, &AppDelegate::VID_HSPID_SSPID_Changed_FwFlash},
    {&WindowControls::txtHSPID_FwFlash, &AppDelegate::VID_HSPID_SSPID_Changed_FwFlash},
    {&WindowControls::txtManu_FwFlash, &AppDelegate::textDidChange_ManuProSN},
    {&WindowControls::txtPro_FwFlash, &AppDelegate::textDidChange_ManuProSN},
    {&WindowControls::txtSN_FwFlash, &AppDelegate::textDidChange_ManuProSN},
    {&WindowControls::txtContainerID_FwFlash, &AppDelegate::textDidChange_ManuProSN},
};

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

} // namespace

void IdentityFields::connectFields()
{
    for (const Row& row : kRows) {
        QLineEdit* const field = m_tool.*row.field;
        QObject::connect(field, &QLineEdit::textEdited, &m_tool,
                         [this, field] { m_tool.controlTextDidChange(field); });
    }
}

void IdentityFields::textChanged(QLineEdit* field)
{
    ConsoleLog(field->text());
    for (const Row& row : kRows) {
        if (m_tool.*row.field == field) {
            (m_tool.*row.changed)(field);
        }
    }
}

void IdentityFields::idChanged(QLineEdit* field)
{
    if (!m_image.loaded) {
        field->clear();
        GeneralFunction::AlertString("No Flash Data");
        return;
    }
    logBytes("VID", m_image.vid);
    logBytes("SSPID", m_image.sspid);
    logBytes("HSPID", m_image.hspid);
    ConsoleLog("VID: " + m_tool.txtVID_FwFlash->text() +
               "    SSPID1: " + m_tool.txtSSPID_FwFlash->text() +
               "    HSPID1: " + m_tool.txtHSPID_FwFlash->text() + "\n");

    struct Limit {
        QLineEdit* field;
        const char* alert;
    };
    for (const Limit& limit : {Limit{m_tool.txtVID_FwFlash, "VID length should be 4."},
                               Limit{m_tool.txtSSPID_FwFlash, "SSPID length should be 4."},
                               Limit{m_tool.txtHSPID_FwFlash, "HSPID length should be 4."}}) {
        const QString text = limit.field->text();
        if (text.size() > static_cast<qsizetype>(kIdDigits)) {
            putText(limit.field, text.left(kIdDigits));
            GeneralFunction::AlertString(limit.alert);
            break; // one field per event
        }
    }
    if (FwImage_EditIds(m_image, textOf(m_tool.txtVID_FwFlash), textOf(m_tool.txtSSPID_FwFlash),
                        textOf(m_tool.txtHSPID_FwFlash))) {
        ConsoleLog("Not Same");
    }
    m_tool.tbViewController->ShowBinary(kIdsBegin, kIdsEnd);
    m_tool.tbViewController->reloadTable();
}

void IdentityFields::stringChanged(QLineEdit* field)
{
    if (!m_image.loaded) {
        field->clear();
        GeneralFunction::AlertString("No Flash Data");
        return;
    }
    ConsoleLog(m_tool.txtManu_FwFlash->text() + "\n" + m_tool.txtPro_FwFlash->text() + "\n" +
               m_tool.txtSN_FwFlash->text() + "\n" + m_tool.txtContainerID_FwFlash->text() + "\n");
    if (textOf(m_tool.txtManu_FwFlash).size() + textOf(m_tool.txtPro_FwFlash).size() +
            textOf(m_tool.txtSN_FwFlash).size() >
        kMostCharacters) {
        removeLastCharacter(field);
    }
    const std::uint8_t changed =
        FwImage_EditTexts(m_image, textOf(m_tool.txtManu_FwFlash), textOf(m_tool.txtPro_FwFlash),
                          textOf(m_tool.txtSN_FwFlash), textOf(m_tool.txtContainerID_FwFlash));
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
    m_tool.tbViewController->ShowBinary(kTextsBegin, kTextsEnd);
    m_tool.tbViewController->reloadTable();
}

} // namespace vornadel
