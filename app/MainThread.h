#pragma once

#include <QObject>

#include <condition_variable>
#include <functional>
#include <mutex>

namespace vornadel
{

/// Hands work to the main thread. Lives there; post() and postAndWait() may be called from any
/// thread. Tasks run in the order in which they were handed over.
class MainThread final : public QObject
{
public:
    void post(std::function<void()> task);

    /// Returns when the task has run, or when stopWaiting() has been called: then it does not run
    /// any more. On the main thread itself the task runs at once.
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
