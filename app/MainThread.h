#pragma once

#include <QObject>

#include <condition_variable>
#include <functional>
#include <mutex>

namespace vornadel
{

/// Runs tasks on the main thread, in the order in which they were posted. Belongs to the main
/// thread; post() and postAndWait() may be called from any thread.
class MainThread final : public QObject
{
public:
    void post(std::function<void()> task);

    /// Returns when the task has run, or when stopWaiting() has been called; then it no longer
    /// runs. On the main thread itself the task runs at once.
    void postAndWait(const std::function<void()>& task);

    /// The application is ending: no further task runs and nobody waits for one. Main thread only.
    void stopWaiting();

protected:
    bool event(QEvent* event) override;

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_stopped = false; // written on the main thread only
};

} // namespace vornadel
