#pragma once

#include "platform/Clock.h"
#include "platform/PrivilegedRun.h"
#include "platform/Shell.h"
#include "platform/SleepInhibitor.h"
#include "platform/SystemVersion.h"
#include "platform/Taskbar.h"
#include "platform/UsbBus.h"

namespace vornadel
{

/// Everything the tool needs from an operating system. The objects referred to outlive the
/// program's work; each main.cpp chooses them once and passes them down.
struct Platform {
    UsbBus& usb;
    Shell& shell;
    PrivilegedRun& privileged;
    SystemVersion& systemVersion;
    Clock& clock;
    SleepInhibitor* sleep = nullptr; ///< null: the machine cannot be kept awake
    Taskbar* taskbar = nullptr;      ///< null: the system has none that shows progress
};

} // namespace vornadel
