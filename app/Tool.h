#pragma once

#include "platform/Platform.h"
#include "platform/ToolPlace.h"

#include <QString>

#include <functional>

namespace vornadel
{

class AppDelegate;

/// Runs the window program on a platform until its window is closed; needs a QApplication. Returns
/// the exit status. If a worker is still blocked in a transfer at the end, it ends the process
/// instead of returning.
///
/// `launched` is called once, after the launch sequence and before the event loop.
int runTool(Platform& platform, const ToolPlace& place, const QString& titleSuffix,
            const std::function<void(AppDelegate&)>& launched = {});

} // namespace vornadel
