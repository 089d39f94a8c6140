#include "app/IdentityFields.h"

#include "app/AppDelegate.h"
#include "app/ConsoleLog.h"
#include "app/GeneralFunction.h"
#include "editor/ImageText.h"
#include "firmware/IdentityEdit.h"

#include <QLineEdit>

#include <algorithm>
#include <iterator>
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

void logBytes(const char* name, const std::uint8_t* position)
{
    ConsoleLog(QString::asprintf("Old %s : %s", name, FwImage_IdText(position).c_str()));
}

/// Keeps the cursor position unless the text is empty.
void putText(QLineEdit* field, const QString& text)
{
    const int cursor = field->cursorPosition();
    field->setText(text);
    field->setCursorPosition(cursor);
}

/// The first characters of a text. One outside the basic plane is two units in a QString.
QString firstCharacters(const QString& text, std::size_t count)
{
    return QString::fromStdU32String(text.toStdU32String().substr(0, count));
}

std::size_t lengthOf(const QString& text) { return text.toStdU32String().size(); }

void removeLastCharacter(QLineEdit* field)
{
    putText(field,
            firstCharacters(field->text(), std::max<std::size_t>(lengthOf(field->text()), 1) - 1));
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

void IdentityFields::tellHistory(const QLineEdit* field)
{
    const auto* const row = std::find_if(std::begin(kRows), std::end(kRows), [&](const Row& each) {
        return m_tool.*each.field == field;
    });
    m_tool.tbViewController->history().edited(static_cast<int>(row - kRows));
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
        if (lengthOf(text) > kIdDigits) {
            putText(limit.field, firstCharacters(text, kIdDigits));
            GeneralFunction::AlertString(limit.alert);
            break; // one field per event
        }
    }
    if (FwImage_EditIds(m_image, idText(*m_tool.txtVID_FwFlash), idText(*m_tool.txtSSPID_FwFlash),
                        idText(*m_tool.txtHSPID_FwFlash))) {
        ConsoleLog("Not Same");
    }
    tellHistory(field);
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
    if (imageText(*m_tool.txtManu_FwFlash).size() + imageText(*m_tool.txtPro_FwFlash).size() +
            imageText(*m_tool.txtSN_FwFlash).size() >
        kMostCharacters) {
        removeLastCharacter(field);
    }
    const std::uint8_t changed = FwImage_EditTexts(
        m_image, imageText(*m_tool.txtManu_FwFlash), imageText(*m_tool.txtPro_FwFlash),
        imageText(*m_tool.txtSN_FwFlash), imageText(*m_tool.txtContainerID_FwFlash));
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
    tellHistory(field);
    m_tool.tbViewController->ShowBinary(kTextsBegin, kTextsEnd);
    m_tool.tbViewController->reloadTable();
}

} // namespace vornadel
