#pragma once

#include "standins/sim/DemoImage.h"
#include "tests/app/ToolUnderTest.h"
#include "tests/support/SingleClicks.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QTest>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace vornadel::test
{

inline constexpr std::size_t kDemoBlock = 0x7E00;

/// Properties of the demo image: its byte 9 is 0x00, byte 20 is 0xA5, byte 22 is 0x7C.
inline constexpr const char* kDefinitions = R"([HubFF_USB_00]
PageName = SSC
PropName = Unbound
PropAddr = 20
PropMask = 255
PropOption_00 = Only
[HubFF_USB_01]
PageName = SSC
PropName = Spread Spectrum
PropDesp = "Spreads the clock"
PropAddr = 9
PropMask = 1
PropOption_00 = Disable
PropOption_01 = Enable
[HubFF_USB_02]
PageName = SSC
PropName = Depth
PropAddr = 20
PropMask = 48
PropOption_00 = None
PropOption_01 = Low
PropOption_02 = Middle
PropOption_03 = High
[HubFF_USB_03]
PageName = System
PropName = Rate
PropAddr = 22
PropMask = 3
BaseOnAddr = 9
BaseOnMask = 1
PropOption_00 = Slow
PropOption_01 = Fast
[HubFF_USB_04]
PageName = SSC
PropName = Fixed
PropAddr = 25
PropMask = 1
[HubFF_USB_05]
PageName = system
PropName = Never Shown
[HubFF_USB_06]
PageName = "SSC "
PropName = Never Shown Either
)";

/// The flash page of a tool with one property file, "demo.INI", beside it.
class FlashPageUnderTest : public ToolUnderTest
{
protected:
    void SetUp() override
    {
        writeDefinitions("demo.INI", kDefinitions);
        launchAndSettle();
        tool().window()->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(tool().window()));
    }

    void writeDefinitions(const std::string& name, const std::string& text) const
    {
        writeFile(name, {text.begin(), text.end()});
    }

    static void click(QWidget* widget) { QTest::mouseClick(widget, Qt::LeftButton); }

    /// The whole read by mouse, to its end.
    void read()
    {
        click(tool().btnRead_FwFlash);
        EXPECT_TRUE(allSwitched(false)) << "at once";
        EXPECT_TRUE(waitUntilEnabled());
        EXPECT_TRUE(waitFor([this] { return tool().slider->doubleValue() == 0; }))
            << "the last that is told";
    }

    void loadFile(const std::string& path)
    {
        chooseByTyping(tool().btnLoad_FwFlash, QString::fromStdString(path));
    }

    /// Loads a file that is refused: the panel's end opens the alert.
    void loadRefused(const std::string& path)
    {
        expectAlert("Firmware format error\n", [&] { loadFile(path); });
    }

    /// Types into a field at the end of its text, key by key.
    static void type(QLineEdit* field, const QString& text)
    {
        field->setFocus();
        QTest::keyClick(field, Qt::Key_End);
        QTest::keyClicks(field, text);
    }

    /// Selects all of a field by key and types.
    static void retype(QLineEdit* field, const QString& text)
    {
        field->setFocus();
        QTest::keyClick(field, Qt::Key_A, Qt::ControlModifier);
        if (text.isEmpty()) {
            QTest::keyClick(field, Qt::Key_Delete);
        }
        QTest::keyClicks(field, text);
    }

    QString name(int row) { return tableText(row, 0); }
    QString value(int row) { return tableText(row, 1); }
    int rows() { return tool().tbProperties_Detail->model()->rowCount(); }
    QStringList names()
    {
        QStringList all;
        for (int row = 0; row < rows(); ++row) {
            all.append(name(row));
        }
        return all;
    }

    QPoint cellAt(int row)
    {
        const QTableView& table = *tool().tbProperties_Detail;
        return table.visualRect(table.model()->index(row, 1)).center();
    }
    void openCell(int row)
    {
        QTest::mouseClick(tool().tbProperties_Detail->viewport(), Qt::LeftButton, {}, cellAt(row));
    }
    QComboBox* openList()
    {
        return tool().tbProperties_Detail->viewport()->findChild<QComboBox*>();
    }

    /// Chooses an entry of a drop-down cell with two clicks.
    void choose(int row, int position)
    {
        const SingleClicks clicks;
        openCell(row);
        ASSERT_NE(openList(), nullptr);
        QAbstractItemView* view = openList()->view();
        const QPoint entry = view->visualRect(view->model()->index(position, 0)).center();
        settleEvents();
        QTest::mouseMove(view->viewport(), entry);
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, entry);
        EXPECT_TRUE(waitFor([this] { return openList() == nullptr; }));
    }

    /// Selects a page or a controller type by key.
    static void select(QComboBox* combo, int position)
    {
        combo->setFocus();
        while (combo->currentIndex() != position) {
            const int before = combo->currentIndex();
            QTest::keyClick(combo, before < position ? Qt::Key_Down : Qt::Key_Up);
            ASSERT_NE(combo->currentIndex(), before);
        }
    }

    QStringList fields()
    {
        QStringList texts;
        for (const QLineEdit* field :
             {tool().txtVID_FwFlash, tool().txtSSPID_FwFlash, tool().txtHSPID_FwFlash,
              tool().txtVer_FwFlash, tool().txtManu_FwFlash, tool().txtPro_FwFlash,
              tool().txtSN_FwFlash, tool().txtContainerID_FwFlash}) {
            texts.append(field->text());
        }
        return texts;
    }
    static QStringList demoFields()
    {
        return {"1209",     "0001",     "0002",   "0100",
                "Vornadel", "Demo Hub", "SN0001", "{5d0fc271-3a94-4e6b-9c18-27b0e463d108}"};
    }

    QString hexText() { return tool().txtViewBin_Detail->toPlainText(); }
    QString redText()
    {
        const auto red = tool().txtViewBin_Detail->extraSelections();
        return red.isEmpty()
                   ? QString()
                   : red.front().cursor.selectedText().replace(QChar::ParagraphSeparator, '\n');
    }

    /// Presses "Save to *.bin", types a path into the panel and confirms.
    void saveAs(const std::string& path)
    {
        chooseByTyping(tool().btnSave_FwFlash, QString::fromStdString(path));
        settleEvents();
    }
    static std::vector<std::uint8_t> bytesOf(const std::string& path)
    {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    /// Saves and returns what was written.
    std::vector<std::uint8_t> saved()
    {
        const std::string path = directory() + "/saved " + std::to_string(m_saves++) + ".bin";
        saveAs(path);
        return bytesOf(path);
    }

private:
    QString tableText(int row, int column)
    {
        return tool().tbProperties_Detail->model()->index(row, column).data().toString();
    }
    int m_saves = 0;
};

} // namespace vornadel::test
