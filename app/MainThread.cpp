#include "app/MainThread.h"

#include <QThread>

#include <memory>
#include <utility>

namespace vornadel
{

void MainThread::post(std::function<void()> task)
{
    QMetaObject::invokeMethod(
        this,
        [this, task = std::move(task)] {
            if (!m_stopped) {
                task();
            }
        },
        Qt::QueuedConnection);
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
