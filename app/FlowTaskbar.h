#pragma once

#include "platform/Taskbar.h"

#include <atomic>
#include <memory>

namespace vornadel
{

/// The flows' way to the taskbar. Any thread.
class FlowTaskbar
{
public:
    /// Null: the system has no taskbar that shows progress.
    explicit FlowTaskbar(Taskbar* taskbar) : m_taskbar(taskbar) {}

    /// Null if it cannot be had. The console log says why, once; after that nobody tries again.
    std::unique_ptr<TaskbarProgress> begin();

private:
    std::atomic<Taskbar*> m_taskbar;
};

} // namespace vornadel
