#pragma once

#include <functional>
#include <string>

namespace vornadel
{

/// The configuration file to use, and why this one.
struct ConfigPlace {
    std::string file;
    const char* reason; ///< "--config", "$VORNADEL_CONFIG", ...
};

/// Where to look for a configuration.
struct ConfigPlaces {
    std::string named;        ///< by the user; taken if it is not empty
    std::string systemFolder; ///< "/etc"
    std::string bundleFile;   ///< the last resort
};

/// The first of: the named one, $VORNADEL_CONFIG, vornadel/config.ini below $XDG_CONFIG_HOME or
/// ~/.config, the same below the system's folder, and the bundle's. The first two are taken even if
/// they do not exist. `variable` gives an environment variable, or an empty text.
ConfigPlace chooseConfig(const ConfigPlaces& places,
                         const std::function<std::string(const char* name)>& variable);

} // namespace vornadel
