#include "platform/linux/LinuxToolPlace.h"

#include <filesystem>
#include <system_error>

namespace vornadel
{

namespace fs = std::filesystem;

ToolPlace linuxToolPlace(const char* argv0)
{
    std::error_code failed;
    fs::path executable = fs::canonical("/proc/self/exe", failed);
    if (failed) {
        executable = fs::weakly_canonical(argv0 != nullptr ? argv0 : "", failed);
    }
    return toolPlaceOf(executable);
}

} // namespace vornadel
