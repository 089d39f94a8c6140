#pragma once

#include "tests/platform/SimulatedNode.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <umockdev.h>
#include <vector>

namespace vornadel::test
{

/// The ids of the device that most tests plug in.
inline constexpr std::uint16_t kVendorId = 0x1209;
inline constexpr std::uint16_t kProductId = 0x5AB3;

/// A private USB bus for this process: sysfs, udev events and device nodes, through umockdev.
/// Create it before anything that uses libusb, and destroy it after.
class UsbTestbed
{
public:
    UsbTestbed();
    UsbTestbed(const UsbTestbed&) = delete;
    UsbTestbed& operator=(const UsbTestbed&) = delete;
    ~UsbTestbed();

    /// Plugs a device into a port, such as "1-1" or "2-1.4"; of the latter's hubs only the last
    /// must be plugged. Each plug gets a new address, as from the kernel.
    SimulatedNode& plug(const std::string& port, std::uint16_t vendorId, std::uint16_t productId,
                        WireHandler handler = {});
    void unplug(const std::string& port);

    /// Makes two plugged devices the halves of one hub in sysfs: their ports are peers.
    void join(const std::string& port, const std::string& otherPort,
              const std::string& deviceClass);

    /// Writes a file below the folder of a plugged device, with the folders in its name.
    void write(const std::string& port, const std::string& file, const std::string& content);
    /// Writes a file anywhere in the tree.
    void writeFile(const std::string& path, const std::string& content);

    std::string nodePath(const std::string& port) const;
    std::string rootFolder() const; ///< the real location of the tree
    std::string lockFolder() const; ///< in the tree, for the locks of places

private:
    struct Plugged {
        SimulatedNode* node;
        std::string nodePath;
        std::string systemPath;
    };

    UMockdevTestbed* m_testbed;
    std::vector<std::unique_ptr<SimulatedNode>> m_nodes; // also removed ones, for open files
    std::map<std::string, Plugged> m_plugged;
    // The handlers of these nodes stay to the end: without one, a host that is opening the node
    // would abort().
    std::vector<std::string> m_left;
    unsigned m_lastAddress = 1; // 1 is the root hub's
};

} // namespace vornadel::test
