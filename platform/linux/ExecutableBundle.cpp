#include "platform/linux/ExecutableBundle.h"

#include <filesystem>
#include <system_error>

namespace vornadel
{

namespace fs = std::filesystem;

MainBundle executableBundle(const char* argv0)
{
    std::error_code failed;
    fs::path executable = fs::canonical("/proc/self/exe", failed);
    if (failed) {
        executable = fs::weakly_canonical(argv0 != nullptr ? argv0 : "", failed);
    }
    return bundleAround(executable);
}

} // namespace vornadel
