#include "app/FlowTaskbar.h"

#include "app/ConsoleLog.h"

#include <string>

namespace vornadel
{

std::unique_ptr<TaskbarProgress> FlowTaskbar::begin()
{
    Taskbar* const taskbar = m_taskbar;
    if (taskbar == nullptr) {
        return nullptr;
    }
    std::string problem;
    std::unique_ptr<TaskbarProgress> progress = taskbar->begin(problem);
    if (progress == nullptr && m_taskbar.exchange(nullptr) != nullptr) {
        ConsoleLog("The taskbar shows no progress: " + QString::fromStdString(problem));
    }
    return progress;
}

} // namespace vornadel
