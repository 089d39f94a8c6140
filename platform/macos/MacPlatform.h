#pragma once

#include "platform/Platform.h"
#include "platform/StdClock.h"
#include "platform/macos/AuthorizedRun.h"
#include "platform/macos/GestaltVersion.h"
#include "platform/macos/IokitBus.h"
#include "platform/posix/SystemShell.h"

namespace vornadel
{

/// Owner of everything for a real Mac: IOKit, `/bin/sh`, Authorization services, `Gestalt`, the
/// real clock.
class MacPlatform
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
                .sleep = nullptr};
    }

private:
    StdClock m_clock;
    IokitBus m_usb;
    SystemShell m_shell;
    AuthorizedRun m_privileged;
    GestaltVersion m_systemVersion;
};

} // namespace vornadel
