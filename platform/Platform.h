#pragma once

#include "platform/Clock.h"
#include "platform/PrivilegedRun.h"
#include "platform/Shell.h"
#include "platform/SystemVersion.h"
#include "platform/UsbBus.h"

namespace vornadel
{

/// What the tool asks of an operating system, in one bundle. References to objects that outlive the
/// program's work; each main.cpp chooses them once and hands them down.
struct Platform {
    UsbBus& usb;
    Shell& shell;
    PrivilegedRun& privileged;
    SystemVersion& systemVersion;
    Clock& clock;
};

} // namespace vornadel
