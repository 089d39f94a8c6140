// A person at the mouse: selects an image, presses "Update" and reads what the window says. The events come from
// the X server, so this runs on a display of its own; only the hub and its clock are not real.
//
//   window_smoke IMAGE [SCREENSHOT]

#include "app/AppDelegate.h"
#include "app/Controls.h"
#include "app/Tool.h"
#include "hub/SupportedIds.h"
#include "sim/SimulatedBus.h"
#include "tests/support/FakeSystem.h"
#include "tests/support/VirtualClock.h"

#include <QApplication>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QScreen>
#include <QTimer>

#include <cstdio>
#include <deque>
#include <functional>
#include <string>
#include <utility>

namespace
{

using namespace vornadel;

constexpr int kPollMilliseconds = 20;
constexpr int kPatienceMilliseconds = 30000; ///< for one step, on a machine that is busy with other things

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

void xdotool(const QStringList& arguments) { QProcess::startDetached("xdotool", arguments); }

void click(const QWidget* widget)
{
    const QPoint at = widget->mapToGlobal(widget->rect().center());
    xdotool({"mousemove", "--sync", QString::number(at.x()), QString::number(at.y()), "click", "1"});
}

/// Does one thing after the other, each as soon as what it waits for has come true.
class Script : public QObject
{
public:
    using Condition = std::function<bool()>;
    using Step = std::function<void()>;

    void when(std::string name, Condition condition, Step step)
    {
        m_steps.push_back({std::move(name), std::move(condition), std::move(step)});
    }

    void start()
    {
        QObject::connect(&m_timer, &QTimer::timeout, this, [this] { poll(); });
        m_timer.start(kPollMilliseconds);
    }

    bool finished() const { return m_steps.empty(); }

private:
    struct Entry {
        std::string name;
        Condition condition;
        Step step;
    };

    void poll()
    {
        if (m_steps.empty()) {
            return;
        }
        if (m_steps.front().condition()) {
            const Step step = std::move(m_steps.front().step);
            m_steps.pop_front();
            m_polls = 0;
            step();
            return;
        }
        if (++m_polls > kPatienceMilliseconds / kPollMilliseconds) {
            std::fprintf(stderr, "window_smoke: waited in vain: %s\n", m_steps.front().name.c_str());
            QApplication::exit(1);
        }
    }

    std::deque<Entry> m_steps;
    QTimer m_timer;
    int m_polls = 0;
};

void writeScript(Script& script, AppDelegate& tool, const QString& image, const QString& screenshot)
{
    const auto idle = [&tool] {
        return tool.btnUpdate_EasyUpdate->isEnabled() && tool.window()->isActiveWindow();
    };
    script.when("the start-up run to end", idle, [&tool] { click(tool.btnSelect_EasyUpdate); });
    script.when(
        "the file dialog", [] { return openDialog() != nullptr; },
        [image] {
            xdotool({"type", "--delay", "5", image});
        });
    script.when(
        "the path in the dialog",
        [image] {
            const QFileDialog* dialog =
                openDialog(); // a completer's list may be the active window for a moment
            return dialog != nullptr && dialog->findChild<QLineEdit*>("fileNameEdit")->text() == image;
        },
        [] {
            xdotool({"key", "Return"});
        });
    script.when(
        "the image in the window", [&tool, image] { return tool.txtFw_EasyUpdate->text() == image; },
        [&tool] { tool.resetProgressInfo(); });
    script.when("the window to be active again", idle, [&tool] { click(tool.btnUpdate_EasyUpdate); });
    script.when(
        "the update to succeed",
        [&tool, idle] {
            return idle() && tool.nstfUpdateInfo_UpdateFW->toPlainText().endsWith("Update FW Success\n");
        },
        [&tool, screenshot] {
            if (!screenshot.isEmpty()) {
                tool.window()->grab().save(screenshot);
            }
            tool.window()->close();
        });
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 2) {
        return 64;
    }
    const QApplication application(argc, argv);
    const QString image = QFile::decodeName(argv[1]);
    const QString screenshot = argc > 2 ? QFile::decodeName(argv[2]) : QString();

    test::VirtualClock clock;
    SimulatedHubOptions options;
    options.keepInMemory = true;
    options.latency = SimulatedLatency::None;
    std::string error;
    const auto bus = SimulatedBus::create(options, clock, error);
    test::IdleShell shell;
    test::IdlePrivilegedRun privileged;
    test::FixedSystemVersion version;
    Platform platform{*bus, shell, privileged, version, clock};

    Script script;
    const int status = runTool(platform, argv[0], " [simulated hub]", [&](AppDelegate& tool) {
        SupportedIdList.at(0) = {1, 0x1209, 0x0001,
                                 0x0002}; // this program lies outside the bundle and its config.ini
        writeScript(script, tool, image, screenshot);
        script.start();
    });
    QFile file(image);
    const bool read = file.open(QIODevice::ReadOnly);
    const std::vector<std::uint8_t> flash = bus->hub().flash();
    if (!read || file.readAll() != QByteArray(reinterpret_cast<const char*>(flash.data()),
                                              static_cast<qsizetype>(flash.size()))) {
        std::fprintf(stderr, "window_smoke: the flash is not equal to the image\n");
        return 1;
    }
    return script.finished() ? status : 1;
}
