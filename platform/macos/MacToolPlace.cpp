#include "platform/macos/MacToolPlace.h"

#include <CoreFoundation/CoreFoundation.h>

#include <array>
#include <filesystem>
#include <string>
#include <system_error>

namespace vornadel
{

namespace fs = std::filesystem;

namespace
{

constexpr CFIndex kLongestPath = 4096;

/// Full path of the main bundle, without a trailing slash; empty if the system does not know.
std::string mainBundlePath()
{
    const CFBundleRef bundle = CFBundleGetMainBundle(); // owned by the system; do not release
    const CFURLRef url = bundle != nullptr ? CFBundleCopyBundleURL(bundle) : nullptr;
    if (url == nullptr) {
        return {};
    }
    std::array<UInt8, kLongestPath> path{};
    const bool told = CFURLGetFileSystemRepresentation(url, true, path.data(), kLongestPath) != 0;
    CFRelease(url);
    std::string text = told ? reinterpret_cast<const char*>(path.data()) : "";
    while (text.size() > 1 && text.back() == '/') {
        text.pop_back();
    }
    return text;
}

} // namespace

ToolPlace macToolPlace(const char* argv0)
{
    const std::string path = mainBundlePath();
    if (path.empty()) {
        std::error_code failed;
        return toolPlaceOf(fs::weakly_canonical(argv0 != nullptr ? argv0 : "", failed));
    }
    std::error_code failed;
    return fs::is_directory(path + "/Contents", failed) ? toolPlaceInBundle(path)
                                                        : toolPlaceOutsideBundle(path);
}

} // namespace vornadel
