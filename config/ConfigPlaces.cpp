#include "config/ConfigPlaces.h"

#include <filesystem>
#include <system_error>

namespace vornadel
{

namespace
{

/// Also if it cannot be read: then it must be told, not passed over.
bool exists(const std::string& file)
{
    std::error_code failed;
    return std::filesystem::exists(file, failed) || failed;
}

} // namespace

ConfigPlace chooseConfig(const ConfigPlaces& places,
                         const std::function<std::string(const char*)>& variable)
{
    if (!places.named.empty()) {
        return {places.named, "--config"};
    }
    if (const std::string file = variable("VORNADEL_CONFIG"); !file.empty()) {
        return {file, "$VORNADEL_CONFIG"};
    }
    const std::string xdg = variable("XDG_CONFIG_HOME");
    const std::string home = variable("HOME");
    const std::string ofUser = xdg.starts_with('/')    ? xdg
                               : home.starts_with('/') ? home + "/.config"
                                                       : std::string();
    const std::string name = "/vornadel/config.ini";
    if (!ofUser.empty() && exists(ofUser + name)) {
        return {ofUser + name, "of this user"};
    }
    if (exists(places.systemFolder + name)) {
        return {places.systemFolder + name, "of this machine"};
    }
    return {places.bundleFile, "of the bundle"};
}

} // namespace vornadel
