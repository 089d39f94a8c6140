#pragma once

#include <memory>
#include <string>

namespace vornadel
{

/// The progress of one flow at the program's place in the taskbar. Its end removes it there.
class TaskbarProgress
{
public:
    TaskbarProgress() = default;
    TaskbarProgress(const TaskbarProgress&) = delete;
    TaskbarProgress& operator=(const TaskbarProgress&) = delete;
    virtual ~TaskbarProgress() = default;

    /// `part`: 0 to 1. Does not block.
    virtual void show(double part) = 0;
};

/// Shows in the taskbar how far a flow is, while other windows cover ours.
class Taskbar
{
public:
    Taskbar() = default;
    Taskbar(const Taskbar&) = delete;
    Taskbar& operator=(const Taskbar&) = delete;
    virtual ~Taskbar() = default;

    /// Null if the taskbar cannot be reached; `problem` then says why. Blocks for a second at most.
    /// Any thread; the progress belongs to it.
    virtual std::unique_ptr<TaskbarProgress> begin(std::string& problem) = 0;
};

} // namespace vornadel
