#pragma once

#include "editor/TableViewController.h"
#include "tests/firmware/ImageBytes.h"

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTableView>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <vector>

namespace vornadel::test
{

/// The views of a flash page without the page: a controller on an image with its block at 0x100.
class PropertyPage : public testing::Test
{
protected:
    static constexpr std::size_t kBlock = 0x100;
    static constexpr std::size_t kLength = 0x400;
    static constexpr const char* kValue = TableViewController::kValueColumn;
    static constexpr const char* kName = TableViewController::kPropertyColumn;

    PropertyPage()
    {
        auto* const fields = m_fields.data();
        const PropertyViews views{&m_table,   &m_icTypes, &m_description, &m_hex,
                                  fields,     fields + 1, fields + 2,     fields + 3,
                                  fields + 4, fields + 5, fields + 6,     fields + 7};
        m_controller = std::make_unique<TableViewController>(
            views, m_image, m_directory.path().toStdString(),
            PropertyVoices{[this](const QString& line) {
                               m_log.append(line);
                               m_heard.append("log: " + line);
                           },
                           [this](const QString& text) {
                               m_alerts.append(text);
                               m_heard.append("alert: " + text);
                           }});
    }

    void load() { ASSERT_TRUE(parse(m_image, imageWithBlock(kLength, kBlock))); }

    /// A bound property with three options, in both lists.
    PropItem& add(std::uint8_t key, std::uint32_t addr, std::uint8_t mask)
    {
        auto item = std::make_shared<PropItem>();
        item->key = key;
        item->addr = addr;
        item->mask = mask;
        item->propName = item->property = "Property " + std::to_string(key);
        item->propDesc = "What it does";
        item->propList = {"Off", "On", "Auto"};
        item->dataList = {"0", "1", "2"};
        item->curValue = "0";
        it().allItemList.push_back(item);
        it().propItemList.push_back(item);
        return *item;
    }

    void choose(int row, int position)
    {
        it().tableView_setObjectValue_forTableColumn_row(position, kValue, row);
    }
    QString cell(int row) { return it().tableView_objectValueForTableColumn_row(kValue, row); }
    std::uint8_t& byte(std::size_t offset) { return m_image.descriptor[offset]; }
    qsizetype rowsAsked() const { return m_log.count("Enter numberOfRowsInTableView"); }
    ByteList allBytes() const { return bytesAt(m_image.data.get(), kLength); }
    TableViewController& it() { return *m_controller; }

    QString redText()
    {
        QString text;
        for (const QTextEdit::ExtraSelection& red : m_hex.extraSelections()) {
            text += red.cursor.selectedText().replace(QChar::ParagraphSeparator, '\n');
        }
        return text;
    }
    qsizetype redStart() { return m_hex.extraSelections().at(0).cursor.selectionStart(); }

    QTemporaryDir m_directory;
    FwImage m_image;
    QStringList m_log;
    QStringList m_alerts;
    QStringList m_heard; ///< lines and alerts in order of arrival
    QComboBox m_icTypes;
    QPlainTextEdit m_description;
    QPlainTextEdit m_hex;
    std::array<QLineEdit, 8> m_fields;
    QTableView m_table;
    std::unique_ptr<TableViewController> m_controller; // destroyed before the views
};

} // namespace vornadel::test
