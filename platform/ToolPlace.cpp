#include "platform/ToolPlace.h"

namespace vornadel
{

namespace fs = std::filesystem;

ToolPlace toolPlaceInBundle(const std::string& bundle)
{
    return {bundle, true, bundle + "/Contents/Resources"};
}

ToolPlace toolPlaceOutsideBundle(const std::string& directory)
{
    return {directory, false, directory};
}

ToolPlace toolPlaceOf(const fs::path& executable)
{
    const fs::path directory = executable.parent_path();
    const fs::path contents = directory.parent_path();
    if (directory.filename() == "MacOS" && contents.filename() == "Contents") {
        return toolPlaceInBundle(contents.parent_path().string());
    }
    return toolPlaceOutsideBundle(directory.string());
}

} // namespace vornadel
