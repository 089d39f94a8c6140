#include "app/MainThread.h"

#include <QCoreApplication>
#include <QEvent>
#include <QThread>

#include <memory>
#include <utility>

namespace vornadel
{

namespace
{

/// Carries a task through the main thread's event queue.
class TaskEvent final : public QEvent
{
public:
    explicit TaskEvent(std::function<void()> task) : QEvent(QEvent::User), m_task(std::move(task))
    {
    }
    void run() const { m_task(); }

private:
    std::function<void()> m_task;
};

} // namespace

void MainThread::post(std::function<void()> task)
{
    QCoreApplication::postEvent(this, new TaskEvent(std::move(task)));
}

bool MainThread::event(QEvent* event)
{
    if (event->type() != QEvent::User) {
        return QObject::event(event);
    }
    if (!m_stopped) {
        static_cast<TaskEvent*>(event)->run();
    }
    return true;
}

void MainThread::postAndWait(const std::function<void()>& task)
{
    if (QThread::currentThread() == thread()) {
        task();
        return;
    }
    const auto done = std::make_shared<bool>(false);
    post([this, task, done] {
        task();
        {
            const std::lock_guard lock(m_mutex);
            *done = true;
        }
        m_changed.notify_all();
    });
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [&] { return *done || m_stopped; });
}

void MainThread::stopWaiting()
{
    {
        const std::lock_guard lock(m_mutex);
        m_stopped = true;
    }
    m_changed.notify_all();
}

} // namespace vornadel
