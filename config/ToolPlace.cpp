#include "config/ToolPlace.h"

#include <system_error>

namespace vornadel
{

namespace fs = std::filesystem;

ToolPlace toolPlace(const char* argv0)
{
    std::error_code failed;
    fs::path executable = fs::canonical("/proc/self/exe", failed);
    if (failed) {
        executable = fs::weakly_canonical(argv0 != nullptr ? argv0 : "", failed);
    }
    return toolPlaceOf(executable);
}

ToolPlace toolPlaceOf(const fs::path& executable)
{
    const fs::path directory = executable.parent_path();
    const fs::path contents = directory.parent_path();
    const fs::path bundle = contents.parent_path();
    if (directory.filename() == "MacOS" && contents.filename() == "Contents" &&
        bundle.extension() == ".app") {
        return {bundle.string(), true, bundle.string() + "/Contents/Resources"};
    }
    return {directory.string(), false, directory.string()};
}

} // namespace vornadel
