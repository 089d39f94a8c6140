#include "hub/HubDetection.h"

#include "hub/HubCommands.h"
#include "hub/HubTransport.h"

namespace vornadel
{

HubDetection Hub_Detect()
{
    HubDetection detection;
    detection.found = Hub_FindDevice();
    if (detection.found) {
        if (Hub_OpenDevice()) {
            detection.version = Hub_GetFwVersion();
        }
        Hub_CloseDevice();
    }
    return detection;
}

} // namespace vornadel
