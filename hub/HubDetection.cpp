#include "hub/HubDetection.h"

#include "hub/HubCommands.h"
#include "hub/HubTransport.h"

#include <chrono>

namespace vornadel
{

namespace
{

/// A hub that answers does so within milliseconds. The window calls this on its main thread.
constexpr std::chrono::seconds kAnswerLimit{2};

} // namespace

HubDetection Hub_Detect()
{
    HubDetection detection;
    detection.found = Hub_FindDevice();
    if (detection.found) {
        if (Hub_OpenDevice(kAnswerLimit)) {
            detection.version = Hub_GetFwVersion();
        }
        Hub_CloseDevice();
    }
    return detection;
}

} // namespace vornadel
