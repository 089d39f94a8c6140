// The cost of the property editor with the largest possible number of properties: from a key press
// in an identity field, or a change of the page, to the pixels; and reading the property file,
// compared with the INI reader alone.

#include "app/Controls.h"
#include "bench/Table.h"
#include "bench/ToolWindow.h"
#include "props/Pages.h"
#include "standins/sim/DemoImage.h"
#include "tests/support/FullPropertyFile.h"
#include "tests/support/VirtualClock.h"

#include <QApplication>
#include <QComboBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QShortcut>
#include <QTableView>
#include <iniparser/iniparser.h>

#include <chrono>
#include <fstream>
#include <functional>
#include <string>

namespace
{

using namespace vornadel;
using namespace vornadel::bench;

constexpr int kProperties = 255;
constexpr int kFullPage = 2;
constexpr int kKeys = 1000;
constexpr int kPageChanges = 100;
constexpr int kReadings = 15;

/// Counts how often a widget is painted.
class Painted final : public QObject
{
public:
    explicit Painted(QWidget* widget) { widget->installEventFilter(this); }
    int count() const { return m_count; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        m_count += event->type() == QEvent::Paint ? 1 : 0;
        return QObject::eventFilter(watched, event);
    }

private:
    int m_count = 0;
};

double millisecondsOf(const std::function<void()>& work)
{
    const auto begin = std::chrono::steady_clock::now();
    work();
    return Milliseconds(std::chrono::steady_clock::now() - begin).count();
}

void press(QWidget* widget, int key, const QString& text)
{
    QKeyEvent down(QEvent::KeyPress, key, Qt::NoModifier, text);
    QApplication::sendEvent(widget, &down);
    QKeyEvent up(QEvent::KeyRelease, key, Qt::NoModifier, text);
    QApplication::sendEvent(widget, &up);
}

/// Handles pending events until a widget has been painted once more.
void untilPainted(const Painted& painted, int before)
{
    for (int round = 0; painted.count() == before; ++round) {
        if (round > 1000) {
            giveUp("nothing was painted");
        }
        QApplication::processEvents();
    }
}

Row keystrokes(AppDelegate& tool)
{
    const Painted hex(tool.txtViewBin_Detail->viewport());
    Series series;
    for (int i = 0; i < kKeys; ++i) {
        const int before = hex.count();
        series.add(millisecondsOf([&] {
            if (i % 2 == 0) {
                press(tool.txtSN_FwFlash, Qt::Key_X, "X");
            } else {
                press(tool.txtSN_FwFlash, Qt::Key_Backspace, "");
            }
            untilPainted(hex, before);
        }));
        if (tool.txtSN_FwFlash->text() != (i % 2 == 0 ? "SN0001X" : "SN0001")) {
            giveUp("a key did not arrive");
        }
    }
    return {"a key in an identity field, 99 of 100", series.count(), 4, series.quantile(0.99),
            series.worst()};
}

/// Opens the search line with a text that all properties have, and edits the byte of all of them.
void searchAndMark(AppDelegate& tool)
{
    for (QShortcut* key : tool.boxDetail->findChildren<QShortcut*>()) {
        if (key->key() == QKeySequence(QKeySequence::Find)) {
            emit key->activated();
        }
    }
    press(tool.txtFind_Detail, Qt::Key_P, "p");
    const PropItemList& found = tool.tbViewController->propItemList;
    if (!tool.txtFind_Detail->isVisible() || found.size() != kProperties) {
        giveUp("the search does not find all properties");
    }
    found.back()->baseOnAddr = 0; // not locked
    tool.tbViewController->tableView_setObjectValue_forTableColumn_row(
        found.back()->curValue == "0" ? 1 : 0, TableViewController::kValueColumn, kProperties - 1);
    // The property with number 0 is not bound to the image.
    if (!tool.lblUnsaved_FwFlash->toolTip().startsWith("254 unsaved edits")) {
        giveUp("the edit is not marked");
    }
}

Row pageChanges(AppDelegate& tool)
{
    const Painted table(tool.tbProperties_Detail->viewport());
    Series series;
    for (int i = 0; i < kPageChanges; ++i) {
        tool.cbPages->setCurrentIndex(0);
        QApplication::processEvents();
        const int before = table.count();
        series.add(millisecondsOf([&] {
            tool.cbPages->setCurrentIndex(kFullPage);
            untilPainted(table, before);
        }));
        if (tool.tbProperties_Detail->model()->rowCount() != kProperties) {
            giveUp("the page is not full");
        }
    }
    return rowOf("a change to a page of 255 properties", series, 50);
}

Row readings(AppDelegate& tool, const std::string& path)
{
    Series alone;
    Series whole;
    for (int i = 0; i < kReadings; ++i) {
        alone.add(millisecondsOf([&path] {
            dictionary* entries = iniparser_load(path.c_str());
            if (entries == nullptr) {
                giveUp("the INI reader does not read the file");
            }
            iniparser_freedict(entries);
        }));
        whole.add(millisecondsOf([&tool] { tool.tbViewController->LoadIni(); }));
        if (tool.tbViewController->allItemList.size() != kProperties) {
            giveUp("the file was not read");
        }
    }
    return {"reading the file into properties", kReadings, 1.3, whole.median() / alone.median(), 0};
}

} // namespace

int main(int argc, char** argv)
{
    prepareForWindows();
    const QApplication application(argc, argv);
    const QTemporaryDir toolDirectory;
    const std::string path = toolDirectory.filePath("Full.INI").toStdString();
    std::ofstream(path) << test::fullPropertyFile(std::string(kPropertyPages.at(kFullPage)));

    test::VirtualClock clock;
    ToolWindow window(toolDirectory.filePath("Vornadel.app").toStdString(), clock, clock,
                      SimulatedLatency::None);
    AppDelegate& tool = window.tool();
    window.choose(*tool.btnLoad_FwFlash, demoImage(kDemoVersion100));
    if (tool.tbViewController->allItemList.size() != kProperties) {
        giveUp("the image or the property file was not loaded");
    }
    const Row page = pageChanges(tool);
    searchAndMark(tool);
    bench::printTable("To the pixels, beside 255 properties found and edited", "milliseconds",
                      {keystrokes(tool), page});
    bench::printTable("A full property file, against the INI reader alone", "times",
                      {readings(tool, path)});
    return 0;
}
