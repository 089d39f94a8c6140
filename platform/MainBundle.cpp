#include "platform/MainBundle.h"

namespace vornadel
{

namespace fs = std::filesystem;

MainBundle bundleAround(const fs::path& executable)
{
    const fs::path directory = executable.parent_path();
    const fs::path contents = directory.parent_path();
    const fs::path bundle = contents.parent_path();
    if (directory.filename() == "MacOS" && contents.filename() == "Contents" &&
        bundle.extension() == ".app") {
        return {bundle.string(), true};
    }
    return {directory.string(), false};
}

} // namespace vornadel
