// Watches the program that it is linked into: prints the moment at which the window's first picture
// was complete, and ends the program. The program itself needs no change.

#include <QAbstractScrollArea>
#include <QCoreApplication>
#include <QEvent>
#include <QTimerEvent>
#include <QWidget>
#include <QWindow>

#include <cstdio>
#include <ctime>

namespace
{

void tellAndQuit()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now); // the clock that the waiting program reads
    std::printf("%lld.%09ld\n", static_cast<long long>(now.tv_sec), now.tv_nsec);
    std::fflush(stdout);
    QCoreApplication::quit();
}

class FirstPaint final : public QObject
{
public:
    using QObject::QObject;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Paint && !m_seen && isViewportOnScreen(watched)) {
            m_seen = true;
            startTimer(0); // runs after the whole window is painted
        }
        return QObject::eventFilter(watched, event);
    }

    void timerEvent(QTimerEvent* event) override
    {
        killTimer(event->timerId());
        tellAndQuit();
    }

private:
    static bool isViewportOnScreen(QObject* watched)
    {
        const auto* const widget = qobject_cast<QWidget*>(watched);
        if (widget == nullptr ||
            qobject_cast<QAbstractScrollArea*>(widget->parentWidget()) == nullptr) {
            return false;
        }
        const QWindow* const window = widget->window()->windowHandle();
        return window != nullptr && window->isExposed();
    }

    bool m_seen = false;
};

void watchTheApplication()
{
    QCoreApplication* const application = QCoreApplication::instance();
    application->installEventFilter(new FirstPaint(application));
}

} // namespace

Q_COREAPP_STARTUP_FUNCTION(watchTheApplication)
