#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>

namespace vornadel
{

/// Runs work on background threads. Flows exclude each other: one that is started while another
/// runs waits for it. Starting is false, and nothing runs, when the system has no thread to give.
class FlowWorker
{
public:
    /// Runs `work` on a new thread beside any flow; for short work that itself starts a flow.
    bool startBeside(std::function<void()> work);

    /// Runs `flow` on a new thread, after a flow that is still running.
    bool start(std::function<void()> flow);

    /// Waits until no thread is left, at most that long. False when one is.
    bool finish(std::chrono::milliseconds atMost);

private:
    void ended();

    std::mutex m_mutex;
    std::condition_variable m_ended;
    std::mutex m_oneFlow;
    int m_running = 0;
};

} // namespace vornadel
