#pragma once

#include "platform/Taskbar.h"

#include <chrono>

namespace vornadel
{

/// Tells the desktop's taskbar or dock over the user's D-Bus, by the signal Update of
/// com.canonical.Unity.LauncherEntry, which several desktops understand. A desktop that does not
/// ignores it. They find the entry by the name of the desktop file.
class LauncherEntry final : public Taskbar
{
public:
    /// `limit`: how long to wait for the bus to accept the connection.
    explicit LauncherEntry(std::chrono::milliseconds limit = std::chrono::seconds(1))
        : m_limit(limit)
    {
    }

    std::unique_ptr<TaskbarProgress> begin(std::string& problem) override;

private:
    std::chrono::milliseconds m_limit;
};

} // namespace vornadel
