#include "platform/linux/SysfsDevice.h"

#include "platform/linux/AttachedBelow.h"
#include "platform/linux/SysfsText.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <unistd.h>
#include <utility>

namespace vornadel
{

namespace
{

constexpr const char* kDevices = "/sys/bus/usb/devices/";

/// The folder of the port with this path: "2-0:1.0/usb2-port3" for 2-3, "2-1:1.0/2-1-port4" for
/// 2-1.4. It belongs to the hub above, so it is there without a device at the port.
std::string folderOfPort(const std::string& path)
{
    const std::size_t end = path.find_last_of("-.");
    if (end == std::string::npos) {
        return {}; // a root hub
    }
    const std::string above = path.substr(0, end);
    const bool aboveIsRootHub = path[end] == '-';
    return kDevices + above + (aboveIsRootHub ? "-0:1.0/usb" : ":1.0/") + above + "-port" +
           path.substr(end + 1);
}

/// The path of a port by the name of its folder.
std::string pathOfPort(const std::string& name)
{
    static const std::string kRootHub = "usb";
    static const std::string kPort = "-port";
    const std::size_t end = name.rfind(kPort);
    if (end == std::string::npos) {
        return {};
    }
    const std::string number = name.substr(end + kPort.size());
    return name.starts_with(kRootHub)
               ? name.substr(kRootHub.size(), end - kRootHub.size()) + '-' + number
               : name.substr(0, end) + '.' + number;
}

/// The last part of the path that a link points to; empty if it is no link.
std::string targetName(const std::string& link)
{
    std::array<char, 4096> target{};
    const ssize_t length = readlink(link.c_str(), target.data(), target.size());
    const std::string path(target.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
    return path.substr(path.rfind('/') + 1);
}

} // namespace

SysfsDevice::SysfsDevice(std::string name) : m_name(std::move(name)), m_folder(kDevices + m_name) {}

unsigned SysfsDevice::bus() const { return static_cast<unsigned>(numberIn(m_folder + "/busnum")); }

unsigned SysfsDevice::address() const
{
    return static_cast<unsigned>(numberIn(m_folder + "/devnum"));
}

unsigned SysfsDevice::vendor() const
{
    return static_cast<unsigned>(numberIn(m_folder + "/idVendor", 16));
}

bool SysfsDevice::isHub() const
{
    constexpr unsigned kHubClass = 9;
    return numberIn(m_folder + "/bDeviceClass", 16) == kHubClass;
}

UsbPort SysfsDevice::otherPort() const
{
    const std::string path = pathOfPort(targetName(folderOfPort(m_name) + "/peer"));
    if (path.empty()) {
        return {};
    }
    // On boards that do not say which ports are one connector, the kernel goes by their numbers,
    // and then a device that is no half of this hub may be there, and stay when the hub leaves.
    const SysfsDevice other(path);
    return {path, other.vendor() == vendor() ? other.address() : 0};
}

UsbTexts SysfsDevice::texts() const
{
    return {.product = textIn(m_folder + "/product"), .serialNumber = textIn(m_folder + "/serial")};
}

std::string SysfsDevice::containerId() const
{
    const std::string bytes = contentOf(m_folder + "/bos_descriptors");
    return containerIdIn({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
}

std::vector<std::string> SysfsDevice::attachedBelow() const
{
    return vornadel::attachedBelow(m_folder);
}

std::string containerIdIn(std::span<const std::uint8_t> bosDescriptor)
{
    constexpr std::size_t kLength = 20; // of the capability: 4 bytes, then the ID
    constexpr std::uint8_t kCapability = 0x10;
    constexpr std::uint8_t kContainerId = 4;
    while (bosDescriptor.size() >= kLength && bosDescriptor[0] != 0) {
        if (bosDescriptor[1] == kCapability && bosDescriptor[2] == kContainerId) {
            std::string text = "{";
            for (std::size_t i = 4; i < kLength; ++i) {
                std::array<char, 4> byte{};
                std::snprintf(byte.data(), byte.size(), "%02x", unsigned{bosDescriptor[i]});
                text +=
                    (i == 8 || i == 10 || i == 12 || i == 14 ? "-" : "") + std::string(byte.data());
            }
            return text + '}';
        }
        bosDescriptor =
            bosDescriptor.subspan(std::min<std::size_t>(bosDescriptor[0], bosDescriptor.size()));
    }
    return {};
}

} // namespace vornadel
