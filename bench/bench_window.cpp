// What one whole update costs in the window beyond the fixed pauses: from the press of the button, through the flow
// on its thread and the progress on the main thread, to the buttons that can be pressed again.

#include "app/AppDelegate.h"
#include "app/Controls.h"
#include "bench/RecordingClock.h"
#include "bench/Table.h"
#include "hub/HubTransport.h"
#include "platform/StdClock.h"
#include "sim/DemoImage.h"
#include "sim/SimulatedBus.h"
#include "tests/support/VirtualClock.h"

#include <QApplication>
#include <QEvent>
#include <QEventLoop>
#include <QFileDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>
#include <QTimerEvent>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

namespace
{

using namespace vornadel;
using bench::RecordingClock;
using bench::Row;
using bench::Series;

constexpr double kTargetMilliseconds = 50;
constexpr int kQuietMilliseconds = 20; // for the detection after an update

using Milliseconds = std::chrono::duration<double, std::milli>;

struct NoShell final : Shell {
    int run(const std::string& /*command*/) override { return -1; }
    bool exists(const std::string& /*path*/) override { return true; }
};
struct NoPrivileges final : PrivilegedRun {
    bool start(const std::string& /*script*/) override { return false; }
};
struct NoVersion final : SystemVersion {
    SystemVersionNumbers read() override { return {12, 0, 0, 0}; }
};

[[noreturn]] void giveUp(const std::string& why)
{
    std::printf("bench_window: %s\n", why.c_str());
    std::exit(EXIT_FAILURE);
}

/// Ends a loop once a button can be pressed again.
class EnabledAgain final : public QObject
{
public:
    EnabledAgain(QPushButton& button, QEventLoop& loop) : m_button(button), m_loop(loop)
    {
        button.installEventFilter(this);
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::EnabledChange && m_button.isEnabled()) {
            QTimer::singleShot(0, &m_loop, SLOT(quit())); // behind what is still to be shown
        }
        return QObject::eventFilter(watched, event);
    }

private:
    QPushButton& m_button;
    QEventLoop& m_loop;
};

/// Chooses a file in the dialog that comes up next.
class FileChooser final : public QObject
{
public:
    explicit FileChooser(QString path) : m_path(std::move(path)) { startTimer(0); }

protected:
    void timerEvent(QTimerEvent* event) override
    {
        killTimer(event->timerId());
        auto* const dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        if (dialog == nullptr) {
            giveUp("no file dialog came up");
        }
        dialog->selectFile(m_path);
        dialog->findChild<QLineEdit*>()->setText(m_path);
        static_cast<QDialog*>(dialog)->done(QDialog::Accepted);
    }

private:
    QString m_path;
};

void beQuiet(int milliseconds)
{
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, SLOT(quit()));
    loop.exec();
}

/// The tool's window over a simulated hub, with an image chosen as a person does it.
class Window
{
public:
    /// `hubClock` for the hub, `flowClock` for the tool; may be one.
    Window(Clock& flowClock, Clock& hubClock, SimulatedLatency latency)
    {
        SimulatedHubOptions options;
        options.latency = latency;
        options.keepInMemory = true;
        std::string error;
        m_bus = SimulatedBus::create(options, hubClock, error);
        if (!m_bus) {
            giveUp(error);
        }
        m_platform =
            std::make_unique<Platform>(Platform{*m_bus, m_shell, m_privileged, m_version, flowClock});
        Hub_UsePlatform(*m_bus, flowClock);
        m_delegate = std::make_unique<AppDelegate>(
            *m_platform, ToolPlace{VORNADEL_BUNDLE, true, VORNADEL_RESOURCES}, QString());
        m_delegate->applicationDidFinishLaunching();
        beQuiet(5 * kQuietMilliseconds); // the run at the start finds no image and ends
        chooseImage();
    }
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;
    ~Window()
    {
        if (!m_delegate->shutDown()) {
            giveUp("an update did not end");
        }
    }

    /// Presses the button and waits for the end; the wall time that went by.
    Milliseconds update()
    {
        m_bus->hub().setFlash(demoImage(kDemoVersion100));
        QEventLoop loop;
        const EnabledAgain enabledAgain(*m_delegate->btnUpdate_EasyUpdate, loop);
        const auto begin = std::chrono::steady_clock::now();
        m_delegate->btnUpdate_EasyUpdate->click();
        loop.exec();
        const Milliseconds wall = std::chrono::steady_clock::now() - begin;
        const QString text = m_delegate->nstfUpdateInfo_UpdateFW->toPlainText();
        if (!text.endsWith("Update FW Success\n") || m_delegate->slider->value() != 100 ||
            m_bus->hub().flash() != demoImage(kDemoVersion101)) {
            giveUp("an update failed: " + text.toStdString());
        }
        beQuiet(kQuietMilliseconds);
        return wall;
    }

private:
    void chooseImage()
    {
        const std::vector<std::uint8_t> bytes = demoImage(kDemoVersion101);
        const QString path = m_folder.filePath("demo-1.01.bin");
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) ||
            file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<qint64>(bytes.size())) < 0) {
            giveUp("no image could be written");
        }
        file.close();
        const FileChooser chooser(path);
        m_delegate->btnSelect_EasyUpdate->click();
        if (m_delegate->txtFw_EasyUpdate->text() != path) {
            giveUp("the image was not chosen");
        }
    }

    NoShell m_shell;
    NoPrivileges m_privileged;
    NoVersion m_version;
    QTemporaryDir m_folder;
    std::unique_ptr<SimulatedBus> m_bus;
    std::unique_ptr<Platform> m_platform;
    std::unique_ptr<AppDelegate> m_delegate;
};

/// Pauses and the hub's own time take no wall time on the virtual clock: what is left is the overhead.
Row onVirtualTime(const std::string& what, SimulatedLatency latency)
{
    constexpr int kRuns = 50;
    test::VirtualClock clock;
    Window window(clock, clock, latency);
    Series overhead;
    for (int run = 0; run < kRuns; ++run) {
        overhead.add(window.update().count());
    }
    return rowOf(what, overhead, kTargetMilliseconds);
}

/// On a busy machine the wall time holds many waits for a processor; the time on it shows how much of that is ours.
void onTheWall(const std::string& what, SimulatedLatency latency, std::vector<Row>& rows)
{
    constexpr int kRuns = 3;
    StdClock clock;
    RecordingClock flowClock(clock);
    RecordingClock hubClock(clock);
    Window window(flowClock, hubClock, latency);
    Series overhead;
    Series processor;
    for (int run = 0; run < kRuns; ++run) {
        const Milliseconds askedBefore = flowClock.asked() + hubClock.asked();
        const std::clock_t processorBefore = std::clock();
        const Milliseconds wall = window.update();
        const Milliseconds asked = flowClock.asked() + hubClock.asked() - askedBefore;
        overhead.add((wall - asked).count());
        processor.add(static_cast<double>(std::clock() - processorBefore) * 1e3 / CLOCKS_PER_SEC);
    }
    rows.push_back(rowOf(what, overhead, kTargetMilliseconds));
    rows.push_back(rowOf("  time on the processor in it, all threads", processor, 0));
}

} // namespace

int main(int argc, char** argv)
{
    // The console log tells of every detection, which is no part of the table.
    const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    ::dup2(nowhere, STDERR_FILENO);
    ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QApplication::setQuitOnLastWindowClosed(false);
    const QApplication application(argc, argv);
    std::vector<Row> rows = {
        onVirtualTime("virtual time, a hub that takes none", SimulatedLatency::None),
        onVirtualTime("virtual time, a hub that takes its time", SimulatedLatency::Real),
    };
    onTheWall("real time, a hub that takes none", SimulatedLatency::None, rows);
    onTheWall("real time, a hub that takes its time", SimulatedLatency::Real, rows);
    bench::printTable("One whole update in the window: wall time less fixed pauses and the hub's own time",
                      "milliseconds", rows);
    double load = 0;
    ::getloadavg(&load, 1);
    std::printf("Programs that wanted a processor during the last minute: %.1f, processors: %u\n\n", load,
                std::thread::hardware_concurrency());
    return 0;
}
