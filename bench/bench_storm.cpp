// Whether the window answers while devices come and go: 2,000 events within two seconds. Each
// request of a detection takes as long as one on a real bus.

#include "app/Controls.h"
#include "bench/Table.h"
#include "bench/ToolWindow.h"
#include "platform/StdClock.h"

#include <QApplication>
#include <QEvent>
#include <QEventLoop>
#include <QLineEdit>

#include <atomic>
#include <chrono>
#include <optional>
#include <string>
#include <thread>

namespace
{

using namespace vornadel;
using namespace vornadel::bench;
using namespace std::chrono_literals;
using Time = std::chrono::steady_clock::time_point;

constexpr int kEvents = 2000;
constexpr auto kEventPause = 1ms;
constexpr auto kRequestTime = 2ms;
constexpr int kEventsPerQuestion = 7; // a figure that detections do not keep step with
constexpr double kTargetMilliseconds = 50;

/// Asks the main thread to paint something, and measures how long that takes.
class Question final : public QObject
{
public:
    explicit Question(QWidget& widget) : m_painted(widget) { widget.installEventFilter(this); }

    /// From any thread.
    void ask() { QCoreApplication::postEvent(this, new Asked(std::chrono::steady_clock::now())); }

    const Series& answers() const { return m_answers; }

protected:
    bool event(QEvent* event) override
    {
        if (event->type() != QEvent::User) {
            return QObject::event(event);
        }
        if (!m_asked) {
            m_asked = static_cast<Asked*>(event)->when;
        }
        m_painted.update();
        return true;
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Paint && m_asked) {
            m_answers.add(Milliseconds(std::chrono::steady_clock::now() - *m_asked).count());
            m_asked.reset();
        }
        return QObject::eventFilter(watched, event);
    }

private:
    struct Asked final : QEvent {
        explicit Asked(Time time) : QEvent(QEvent::User), when(time) {}
        Time when;
    };

    QWidget& m_painted;
    std::optional<Time> m_asked;
    Series m_answers;
};

} // namespace

int main(int argc, char** argv)
{
    prepareForWindows();
    const QApplication application(argc, argv);
    StdClock clock;
    ToolWindow window(VORNADEL_BUNDLE, clock, clock, SimulatedLatency::None);
    std::atomic<unsigned> requests = 0;
    window.hub().onRequest = [&](const ControlRequest&) {
        ++requests;
        std::this_thread::sleep_for(kRequestTime);
    };

    Question question(*window.tool().txtSN_FwFlash);
    QEventLoop loop;
    const auto begin = std::chrono::steady_clock::now();
    std::thread storm([&] {
        for (int i = 0; i < kEvents; ++i) {
            window.hub().notifier().push(i % 2 == 0 ? UsbEvent::Attached : UsbEvent::Detached);
            window.hub().notifier().deliver();
            if (i % kEventsPerQuestion == 0) {
                question.ask();
            }
            std::this_thread::sleep_until(begin + (i + 1) * kEventPause);
        }
        QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
    });
    loop.exec();
    storm.join();

    const Series& answers = question.answers();
    const std::string detections = std::to_string(requests / 2);
    printTable("2,000 devices come and go in two seconds (" + detections + " detections)",
               "milliseconds",
               {{"from a question to the pixels, 99 of 100", answers.count(), kTargetMilliseconds,
                 answers.quantile(0.99), answers.worst()}});
    return 0;
}
