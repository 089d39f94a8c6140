#include "app/FlowWorker.h"

#include <system_error>
#include <thread>
#include <utility>

namespace vornadel
{

bool FlowWorker::startBeside(std::function<void()> work)
{
    {
        const std::lock_guard lock(m_mutex);
        ++m_running;
    }
    try {
        std::thread([this, work = std::move(work)]() mutable {
            work();
            work = nullptr; // destroys its captures before the thread counts as ended
            ended();
        }).detach();
    } catch (const std::system_error&) {
        ended();
        return false;
    }
    return true;
}

void FlowWorker::ended()
{
    const std::lock_guard lock(m_mutex);
    --m_running;
    m_ended.notify_all(); // under the lock, because after finish() this object may be gone
}

bool FlowWorker::start(std::function<void()> flow)
{
    return startBeside([this, flow = std::move(flow)] {
        const std::lock_guard lock(m_oneFlow);
        flow();
    });
}

bool FlowWorker::finish(std::chrono::milliseconds atMost)
{
    std::unique_lock lock(m_mutex);
    return m_ended.wait_for(lock, atMost, [this] { return m_running == 0; });
}

} // namespace vornadel
