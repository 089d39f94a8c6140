#include "flows/ScalarUpdate.h"

#include "flows/FirmwareUpdate.h"

namespace vornadel
{

bool updateScalarImage(FwImage& image, const std::string& resourcePath,
                       const std::string& fwbinPath, const std::string& imageName,
                       FlowReporter& reporter)
{
    if (!fwbinPath.empty()) {
        FwImage_LoadFile(image, resourcePath + "//" + fwbinPath);
    }
    return updateFirmware(image, imageName, reporter);
}

} // namespace vornadel
