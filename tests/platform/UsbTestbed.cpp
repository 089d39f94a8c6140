#include "tests/platform/UsbTestbed.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <utility>

namespace vornadel::test
{

namespace
{

void check(bool done, GError* error)
{
    if (!done) {
        std::fprintf(stderr, "testbed: %s\n", error != nullptr ? error->message : "failed");
        std::abort();
    }
}

template <typename... Values>
std::string formatted(const char* format, Values... values)
{
    std::array<char, 1024> text{};
    std::snprintf(text.data(), text.size(), format, values...);
    return text.data();
}

/// Device, configuration and interface descriptor, in the upper-case hex digits of a testbed
/// description.
std::string descriptors(unsigned vendorId, unsigned productId)
{
    return formatted("12012003FF000009%02X%02X%02X%02X000100000001"
                     "0902120001010080320904000000FF000000",
                     vendorId & 0xFF, vendorId >> 8, productId & 0xFF, productId >> 8);
}

/// "/devices/usb2/2-1/2-1.4" for the port 2-1.4.
std::string devicePath(const std::string& port)
{
    std::string path = "/devices/usb" + port.substr(0, port.find('-'));
    for (std::size_t end = 0; end != std::string::npos;) {
        end = port.find('.', end + 1);
        path += '/' + port.substr(0, end);
    }
    return path;
}

/// The name of a port in the folder of the hub above.
std::string portName(const std::string& port)
{
    const std::size_t end = port.find_last_of("-.");
    return (port[end] == '-' ? "usb" : "") + port.substr(0, end) + "-port" + port.substr(end + 1);
}

/// The folder with the ports of the hub above.
std::string portsFolder(const std::string& port)
{
    const std::string above = port.substr(0, port.find_last_of("-."));
    return above + (above.find('-') == std::string::npos ? "-0:1.0" : ":1.0");
}

} // namespace

UsbTestbed::UsbTestbed() : m_testbed(umockdev_testbed_new()) {}

UsbTestbed::~UsbTestbed()
{
    while (!m_plugged.empty()) {
        unplug(std::string(m_plugged.rbegin()->first)); // a hub after what is in it
    }
    for (const std::string& nodePath : m_left) {
        GError* error = nullptr;
        check(umockdev_testbed_detach_ioctl(m_testbed, nodePath.c_str(), &error) != 0, error);
    }
    g_object_unref(m_testbed);
}

SimulatedNode& UsbTestbed::plug(const std::string& port, std::uint16_t vendorId,
                                std::uint16_t productId, WireHandler handler)
{
    if (!handler) {
        handler = [](const WireRequest&) { return WireAnswer{}; };
    }
    const unsigned address = ++m_lastAddress;
    const unsigned bus = static_cast<unsigned>(std::stoul(port));
    const std::string name = formatted("bus/usb/%03u/%03u", bus, address);
    SimulatedNode& node =
        *m_nodes.emplace_back(std::make_unique<SimulatedNode>(address, std::move(handler)));
    const std::string hex = descriptors(vendorId, productId);
    const std::string description =
        "P: " + devicePath(port) + "\nN: " + name + "=" + hex + "\nE: DEVNAME=/dev/" + name +
        "\nE: DEVTYPE=usb_device\nE: SUBSYSTEM=usb\nE: MAJOR=189\n" +
        formatted("E: MINOR=%u\nE: BUSNUM=%03u\nE: DEVNUM=%03u\n", address - 1, bus, address) +
        formatted("A: busnum=%u\\n\nA: devnum=%u\\n\nA: dev=189:%u\\n\n", bus, address,
                  address - 1) +
        "A: speed=5000\\n\nA: bConfigurationValue=1\\n\n" +
        formatted("A: idVendor=%04x\\n\nA: idProduct=%04x\\n\n", unsigned{vendorId},
                  unsigned{productId}) +
        "H: descriptors=" + hex + "\n";
    const Plugged plugged{&node, "/dev/" + name, "/sys" + devicePath(port)};
    GError* error = nullptr;
    // Adding the description sends the "add" event, and the host may open at once. So the node's
    // handler comes first.
    check(umockdev_testbed_attach_ioctl(m_testbed, plugged.nodePath.c_str(), node.base(), &error) !=
              0,
          error);
    check(umockdev_testbed_add_from_string(m_testbed, description.c_str(), &error) != 0, error);
    m_plugged[port] = plugged;
    return node;
}

void UsbTestbed::unplug(const std::string& port)
{
    const auto found = m_plugged.find(port);
    const Plugged plugged = found->second;
    m_plugged.erase(found);
    plugged.node->vanish();
    umockdev_testbed_uevent(m_testbed, plugged.systemPath.c_str(), "remove");
    umockdev_testbed_remove_device(m_testbed, plugged.systemPath.c_str());
    m_left.push_back(plugged.nodePath);
}

void UsbTestbed::join(const std::string& port, const std::string& otherPort,
                      const std::string& deviceClass)
{
    for (const auto& [own, other] : {std::pair(port, otherPort), std::pair(otherPort, port)}) {
        write(own, "bDeviceClass", deviceClass + '\n');
        const std::filesystem::path device = rootFolder() + m_plugged.at(own).systemPath;
        const std::filesystem::path ports = device.parent_path() / portsFolder(own);
        const std::filesystem::path peer = ports / portName(own) / "peer";
        const std::filesystem::path link =
            rootFolder() + "/sys/bus/usb/devices/" + portsFolder(own);
        std::filesystem::create_directories(peer.parent_path());
        std::filesystem::remove(peer);
        std::filesystem::create_directory_symlink("/elsewhere/" + portName(other), peer);
        std::filesystem::remove(link);
        std::filesystem::create_directory_symlink(ports, link);
    }
}

void UsbTestbed::write(const std::string& port, const std::string& file, const std::string& content)
{
    writeFile(m_plugged.at(port).systemPath + '/' + file, content);
}

void UsbTestbed::writeFile(const std::string& path, const std::string& content)
{
    const std::filesystem::path whole = rootFolder() + path;
    std::filesystem::create_directories(whole.parent_path());
    std::ofstream(whole, std::ios::binary) << content;
}

std::string UsbTestbed::lockFolder() const
{
    const std::filesystem::path folder = rootFolder() + "/locks";
    std::filesystem::create_directory(folder);
    std::filesystem::permissions(folder, std::filesystem::perms(01777));
    return folder;
}

std::string UsbTestbed::nodePath(const std::string& port) const
{
    return m_plugged.at(port).nodePath;
}

std::string UsbTestbed::rootFolder() const
{
    gchar* const folder = umockdev_testbed_get_root_dir(m_testbed);
    std::string root = folder;
    g_free(folder);
    return root;
}

} // namespace vornadel::test
