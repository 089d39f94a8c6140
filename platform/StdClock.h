#pragma once

#include "platform/Clock.h"

#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>

namespace vornadel
{

/// Real time, in standard C++ only. The first after() starts the thread for tasks. The destructor
/// drops tasks that are not due and waits for one that is running.
class StdClock final : public Clock
{
public:
    StdClock() = default;
    ~StdClock() override;

    Duration now() override;
    void sleep(Duration pause) override;
    void sleepUntil(const std::function<bool()>& over, Duration pause) override;
    void wake() override;
    void after(Duration delay, std::function<void()> task) override;
    void interrupt() override;

private:
    using Moment = std::chrono::steady_clock::time_point;

    void runTasks();

    std::mutex m_mutex;
    std::condition_variable m_sleepers;
    std::condition_variable m_taskAdded;
    std::multimap<Moment, std::function<void()>> m_tasks; // equal moments keep the order of after()
    std::thread m_taskThread;
    bool m_interrupted = false;
    bool m_ending = false;
};

} // namespace vornadel
