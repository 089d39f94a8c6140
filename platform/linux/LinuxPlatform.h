#pragma once

#include "platform/Platform.h"
#include "platform/StdClock.h"
#include "platform/linux/LauncherEntry.h"
#include "platform/linux/LibusbBus.h"
#include "platform/linux/LogindInhibitor.h"
#include "platform/linux/OsRelease.h"
#include "platform/linux/PkexecRun.h"
#include "platform/posix/SystemShell.h"

namespace vornadel
{

/// Owner of everything for the real machine: libusb, `/bin/sh`, polkit, logind, the desktop's
/// taskbar, os-release, the real clock.
class LinuxPlatform
{
public:
    /// References into this object, which must outlive their use.
    Platform platform()
    {
        return {.usb = m_usb,
                .shell = m_shell,
                .privileged = m_privileged,
                .systemVersion = m_systemVersion,
                .clock = m_clock,
                .sleep = &m_sleep,
                .taskbar = &m_taskbar};
    }

private:
    StdClock m_clock; // first, because the bus uses it until its end
    LibusbBus m_usb{m_clock};
    SystemShell m_shell;
    PkexecRun m_privileged;
    OsRelease m_systemVersion;
    LogindInhibitor m_sleep;
    LauncherEntry m_taskbar;
};

} // namespace vornadel
