// A user with a mouse changes a hub: reads its flash, types a new serial number, chooses two values
// in the property table, saves, updates with the saved file and reads again. Exactly these changes
// must be in the hub. The events come from the X server, so this runs on a separate display; the
// script only says when. Only the hub and its clock are simulated.

#include "app/AppDelegate.h"
#include "app/Controls.h"
#include "app/Tool.h"
#include "standins/sim/SimulatedBus.h"
#include "tests/app/PatientClock.h"
#include "tests/support/FakeMachine.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QTableView>
#include <QTemporaryDir>
#include <QTimer>

#include <array>
#include <cstdint>
#include <cstdio>
#include <deque>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace
{

using namespace vornadel;
using namespace vornadel::test;

constexpr int kPollMilliseconds = 20;
constexpr int kPatienceMilliseconds = 30000; ///< for one step, even on a busy machine

constexpr std::size_t kFlashSize = 32768;
constexpr std::size_t kBlock = 0x7E00;            // of the demo image
constexpr std::size_t kSerial = kBlock + 43 + 22; // two strings of 10 bytes and a header
const std::map<std::size_t, std::uint8_t> kChanged = {
    {kBlock + 11, 0x0B}, // "SSC Mode" from 3 to 1, bits 2 and 1 of 0x0F
    {kBlock + 12, 0x22}, // "U1 Enable" from 1 to 0, bit 4 of 0x32
    {kBlock + 42, 0x02}, // the serial number has been edited
    {kSerial + 4, '4'},  // SN0001 became SN0042
    {kSerial + 5, '2'},
};

void xdotool(const QStringList& arguments) { QProcess::startDetached("xdotool", arguments); }

void clickAt(const QPoint& onScreen)
{
    xdotool(
        {"mousemove", QString::number(onScreen.x()), QString::number(onScreen.y()), "click", "1"});
}

void click(const QWidget* widget) { clickAt(widget->mapToGlobal(widget->rect().center())); }

/// The dialog with the keyboard focus.
QFileDialog* openDialog()
{
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (auto* dialog = qobject_cast<QFileDialog*>(widget);
            dialog != nullptr && dialog->isActiveWindow()) {
            return dialog;
        }
    }
    return nullptr;
}

/// Runs steps one after the other, each as soon as its condition is true.
class MouseScript final : public QObject
{
public:
    using Condition = std::function<bool()>;
    using Step = std::function<void()>;

    /// If the condition never becomes true, the application ends with status 1 and prints `name`.
    void when(std::string name, Condition condition, Step step)
    {
        m_entries.push_back({std::move(name), std::move(condition), std::move(step)});
    }

    /// Puts a path into the next file dialog and confirms by key.
    void answerFileDialog(const QString& path)
    {
        when(
            "the file dialog", [] { return openDialog() != nullptr; },
            [path] {
                openDialog()->findChild<QLineEdit*>("fileNameEdit")->setText(path);
                xdotool({"key", "Return"});
            });
        when(
            "the file dialog to close", [] { return openDialog() == nullptr; }, [] {});
    }

    /// Presses an entry of the list that opens. `combo` may be null until then.
    void chooseEntry(const std::string& name, const std::function<QComboBox*()>& combo,
                     int position)
    {
        const auto open = std::make_shared<QElapsedTimer>();
        when(
            name,
            [combo, open] {
                const QComboBox* const box = combo();
                if (box == nullptr || !box->view()->isVisible()) {
                    return false;
                }
                if (!open->isValid()) {
                    open->start();
                }
                // Any sooner, and the list takes it for the second click of a double click.
                return open->hasExpired(QApplication::doubleClickInterval());
            },
            [combo, position] {
                const QAbstractItemView& view = *combo()->view();
                clickAt(view.viewport()->mapToGlobal(
                    view.visualRect(view.model()->index(position, 0)).center()));
            });
    }

    void start()
    {
        QObject::connect(&m_timer, &QTimer::timeout, this, [this] { poll(); });
        m_timer.start(kPollMilliseconds);
    }

    bool finished() const { return m_entries.empty(); }

private:
    struct Entry {
        std::string name;
        Condition condition;
        Step step;
    };

    void poll()
    {
        if (m_entries.empty()) {
            return;
        }
        if (m_entries.front().condition()) {
            const Step step = std::move(m_entries.front().step);
            m_entries.pop_front();
            m_polls = 0;
            step();
            return;
        }
        if (++m_polls > kPatienceMilliseconds / kPollMilliseconds) {
            std::fprintf(stderr, "timed out waiting for: %s\n", m_entries.front().name.c_str());
            QApplication::exit(1);
        }
    }

    std::deque<Entry> m_entries;
    QTimer m_timer;
    int m_polls = 0;
};

/// Presses a value cell of the property table, waits for its list and presses an entry.
void choose(MouseScript& script, AppDelegate& tool, int row, const QString& name, int position,
            const QString& shown)
{
    QTableView& table = *tool.tbProperties_Detail;
    const auto text = [&table, row](int column) {
        return table.model()->index(row, column).data().toString();
    };
    const auto list = [&table] { return table.viewport()->findChild<QComboBox*>(); };
    script.when(
        "the row \"" + name.toStdString() + "\"",
        [&table, text, name] { return table.window()->isActiveWindow() && text(0) == name; },
        [&table, row] {
            clickAt(table.viewport()->mapToGlobal(
                table.visualRect(table.model()->index(row, 1)).center()));
        });
    script.chooseEntry("the list of the cell", list, position);
    script.when(
        "the cell to read \"" + shown.toStdString() + "\"",
        [text, list, shown] { return list() == nullptr && text(1) == shown; }, [] {});
}

void readFlash(MouseScript& script, AppDelegate& tool)
{
    const auto idle = [&tool] {
        return tool.btnRead_FwFlash->isEnabled() && tool.window()->isActiveWindow();
    };
    script.when("the buttons before the read", idle, [&tool] { click(tool.btnRead_FwFlash); });
    script.when(
        "the read to succeed",
        [&tool, idle] {
            return idle() &&
                   tool.nstfUpdateInfo_UpdateFW->toPlainText().endsWith("Read Fw Success\n");
        },
        [&tool] { tool.resetProgressInfo(); });
}

/// The window's state as the window manager keeps it.
QByteArray stateOf(const QWidget& window)
{
    // Not by QProcess, because then the thread sanitizer takes this process for the child.
    const QByteArray command = "xprop -id " + QByteArray::number(window.winId()) + " _NET_WM_STATE";
    std::FILE* const xprop = popen(command.constData(), "r");
    std::array<char, 256> line{};
    const bool told = xprop != nullptr && std::fgets(line.data(), line.size(), xprop) != nullptr;
    if (xprop != nullptr) {
        pclose(xprop);
    }
    return told ? QByteArray(line.data()) : QByteArray();
}

/// A flow that ends behind other windows asks for attention.
void readMinimized(MouseScript& script, AppDelegate& tool)
{
    QWidget& window = *tool.window();
    script.when(
        "the buttons", [&tool] { return tool.btnRead_FwFlash->isEnabled(); },
        [&window] { window.showMinimized(); });
    script.when(
        "the window to be minimized",
        [&window] { return !window.isActiveWindow() && stateOf(window).contains("HIDDEN"); },
        [&tool] { tool.btnRead_FwFlash->click(); });
    script.when(
        "the call for attention",
        [&window] { return stateOf(window).contains("DEMANDS_ATTENTION"); },
        [&window] {
            window.showNormal();
            window.activateWindow();
        });
}

void writeScript(MouseScript& script, AppDelegate& tool, const QString& path)
{
    const auto idle = [&tool] {
        return tool.btnRead_FwFlash->isEnabled() && tool.window()->isActiveWindow();
    };
    readFlash(script, tool);
    script.when(
        "the serial number", [&tool] { return tool.txtSN_FwFlash->text() == "SN0001"; },
        [&tool] { click(tool.txtSN_FwFlash); });
    script.when(
        "the keyboard in the field", [&tool] { return tool.txtSN_FwFlash->hasFocus(); },
        [] {
            xdotool({"key", "ctrl+a", "type", "SN0042"});
        });
    script.when(
        "the new serial number", [&tool] { return tool.txtSN_FwFlash->text() == "SN0042"; }, [] {});
    choose(script, tool, 2, "SSC Mode", 1, "1 : Center-spread");
    script.when("the window", idle, [&tool] { click(tool.cbPages); });
    script.chooseEntry(
        "the list of pages", [&tool] { return tool.cbPages; }, 1);
    choose(script, tool, 0, "U1 Enable", 0, "0 : Disable");
    script.when("the window", idle, [&tool] { click(tool.btnSave_FwFlash); });
    script.answerFileDialog(path);
    script.when(
        "the saved file", [idle, path] { return idle() && QFile(path).size() == kFlashSize; },
        [&tool] { click(tool.btnSelect_EasyUpdate); });
    script.answerFileDialog(path);
    script.when(
        "the saved image on the update page",
        [&tool, idle] { return idle() && tool.txtSN_EasyUpdate->text() == "SN0042"; },
        [&tool] { click(tool.btnUpdate_EasyUpdate); });
    script.when(
        "the update to succeed",
        [&tool, idle] {
            return idle() &&
                   tool.nstfUpdateInfo_UpdateFW->toPlainText().endsWith("Update FW Success\n");
        },
        [] {});
    readFlash(script, tool);
    script.when(
        "the changed values",
        [&tool] {
            const QAbstractItemModel& rows = *tool.tbProperties_Detail->model();
            return tool.txtSN_FwFlash->text() == "SN0042" &&
                   rows.index(2, 1).data().toString() == "1 : Center-spread";
        },
        [] {});
    readMinimized(script, tool);
    script.when("the window", idle, [&tool] { tool.window()->close(); });
}

} // namespace

int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    const QTemporaryDir folder;
    const QString path = folder.filePath("changed.bin");
    PatientClock clock;
    std::string error;
    const auto bus =
        SimulatedBus::create("latency=none,image=" + path.toStdString() + ".flash", clock, error);
    if (!bus) {
        std::fprintf(stderr, "%s\n", error.c_str());
        return 1;
    }
    FakeShell shell;
    FakePrivilegedRun privileged;
    FakeSystemVersion version;
    Platform platform{*bus, shell, privileged, version, clock};
    const std::vector<std::uint8_t> before = bus->hub().flash();
    MouseScript script;
    const int status = runTool(platform, toolPlaceOf(std::filesystem::canonical(argv[0])),
                               " [simulated hub]", [&](AppDelegate& tool) {
                                   clock.mainThread = &tool.mainThread();
                                   writeScript(script, tool, path);
                                   script.start();
                               });
    if (!QFile::exists(DESKTOP_FILES + QGuiApplication::desktopFileName() + ".desktop")) {
        std::fprintf(stderr, "flash_story: the program has no desktop file\n");
        return 1;
    }
    QFile file(path);
    if (status != 0 || !script.finished() || !file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "flash_story: the story was not played to its end\n");
        return 1;
    }
    std::vector<std::uint8_t> expected = before;
    for (const auto& [offset, byte] : kChanged) {
        expected.at(offset) = byte;
    }
    const QByteArray saved = file.readAll();
    if (std::vector<std::uint8_t>(saved.begin(), saved.end()) != expected ||
        bus->hub().flash() != expected) {
        std::fprintf(stderr, "flash_story: the file or the flash has other changes\n");
        return 1;
    }
    return 0;
}
