#pragma once

#include <string>
#include <vector>

namespace vornadel
{

/// What hangs below a hub, by the hub's folder in sysfs: disks with their mount points, network
/// interfaces, keyboards, mice, and every USB device that is none of these and no hub.
std::vector<std::string> attachedBelow(const std::string& hubFolder);

} // namespace vornadel
