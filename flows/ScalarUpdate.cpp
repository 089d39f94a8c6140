#include "flows/ScalarUpdate.h"

namespace vornadel
{

bool loadConfiguredImage(FwImage& image, const std::string& resourcePath,
                         const std::string& fwbinPath)
{
    if (fwbinPath.empty()) {
        return false;
    }
    // A file that cannot be read leaves the record as it was: loaded, or without data.
    return FwImage_LoadFile(image, resourcePath + "//" + fwbinPath) ||
           (!image.loaded && image.data != nullptr);
}

} // namespace vornadel
