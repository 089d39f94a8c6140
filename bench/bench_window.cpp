// The cost of one whole update in the window, beyond the fixed pauses: from the press of the
// button, through the flow on its thread and the progress on the main thread, until the buttons are
// enabled again.

#include "app/Controls.h"
#include "bench/RecordingClock.h"
#include "bench/Table.h"
#include "bench/ToolWindow.h"
#include "platform/StdClock.h"
#include "standins/sim/DemoImage.h"
#include "tests/support/VirtualClock.h"

#include <QApplication>
#include <QEvent>
#include <QEventLoop>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>
#include <thread>
#include <vector>

namespace
{

using namespace vornadel;
using namespace vornadel::bench;

constexpr double kTargetMilliseconds = 50;

/// Ends a loop once a button is enabled again.
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
            QTimer::singleShot(0, &m_loop, SLOT(quit())); // after what is still queued for display
        }
        return QObject::eventFilter(watched, event);
    }

private:
    QPushButton& m_button;
    QEventLoop& m_loop;
};

/// The tool's window, with an image chosen in the dialog as a user would.
class Window
{
public:
    Window(Clock& flowClock, Clock& hubClock, SimulatedLatency latency)
        : m_window(VORNADEL_BUNDLE, flowClock, hubClock, latency)
    {
        AppDelegate& tool = m_window.tool();
        const QString path =
            m_window.choose(*tool.btnSelect_EasyUpdate, demoImage(kDemoVersion101));
        if (tool.txtFw_EasyUpdate->text() != path) {
            giveUp("the image was not chosen");
        }
    }

    /// Presses the button, waits for the end and returns the wall time.
    Milliseconds update()
    {
        AppDelegate& tool = m_window.tool();
        m_window.hub().setFlash(demoImage(kDemoVersion100));
        QEventLoop loop;
        const EnabledAgain enabledAgain(*tool.btnUpdate_EasyUpdate, loop);
        const auto begin = std::chrono::steady_clock::now();
        tool.btnUpdate_EasyUpdate->click();
        loop.exec();
        const Milliseconds wall = std::chrono::steady_clock::now() - begin;
        const QString text = tool.nstfUpdateInfo_UpdateFW->toPlainText();
        if (!text.endsWith("Update FW Success\n") || tool.slider->value() != 100 ||
            m_window.hub().flash() != demoImage(kDemoVersion101)) {
            giveUp("an update failed: " + text.toStdString());
        }
        beQuiet(ToolWindow::kQuietMilliseconds);
        return wall;
    }

private:
    ToolWindow m_window;
};

/// On the virtual clock, pauses and the hub's own time take no wall time. The rest is overhead.
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

/// On a busy machine much of the wall time is waiting for a processor; the processor time shows how
/// much of it is ours.
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
    prepareForWindows();
    const QApplication application(argc, argv);
    std::vector<Row> rows = {
        onVirtualTime("virtual time, a hub that takes none", SimulatedLatency::None),
        onVirtualTime("virtual time, a hub that takes its time", SimulatedLatency::Real),
    };
    onTheWall("real time, a hub that takes none", SimulatedLatency::None, rows);
    onTheWall("real time, a hub that takes its time", SimulatedLatency::Real, rows);
    bench::printTable(
        "One whole update in the window: wall time less fixed pauses and the hub's own time",
        "milliseconds", rows);
    double load = 0;
    ::getloadavg(&load, 1);
    std::printf("Programs that wanted a processor during the last minute: %.1f, processors: %u\n\n",
                load, std::thread::hardware_concurrency());
    return 0;
}
