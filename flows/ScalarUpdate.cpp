#include "flows/ScalarUpdate.h"

#include "flows/FirmwareUpdate.h"

namespace vornadel
{

bool loadConfiguredImage(FwImage& image, const std::string& resourcePath,
                         const std::string& fwbinPath)
{
    return !fwbinPath.empty() && FwImage_LoadFile(image, resourcePath + "//" + fwbinPath);
}

bool updateScalarImage(FwImage& image, const std::string& resourcePath,
                       const std::string& fwbinPath, const std::string& imageName,
                       FlowReporter& reporter)
{
    loadConfiguredImage(image, resourcePath, fwbinPath);
    return updateFirmware(image, imageName, reporter);
}

} // namespace vornadel
