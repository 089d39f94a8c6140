#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>

namespace vornadel
{

/// Runs work on background threads. Flows exclude each other: one that is started while another
/// runs waits for it. If the system has no thread, starting returns false and nothing runs.
class FlowWorker
{
public:
    /// Runs `work` on a new thread, in parallel with any flow. For short work that starts a flow.
    bool startBeside(std::function<void()> work);

    /// Runs `flow` on a new thread, after a flow that is still running.
    bool start(std::function<void()> flow);

    /// Waits at most that long until no thread is left. False if one still is.
    bool finish(std::chrono::milliseconds atMost);

private:
    void ended();

    std::mutex m_mutex;
    std::condition_variable m_ended;
    std::mutex m_oneFlow;
    int m_running = 0;
};

} // namespace vornadel
