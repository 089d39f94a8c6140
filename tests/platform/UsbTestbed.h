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

/// A USB bus of its own for this process: sysfs, udev events and device nodes, by way of umockdev.
/// Whatever uses libusb must come after it and go before it.
class UsbTestbed
{
public:
    UsbTestbed();
    UsbTestbed(const UsbTestbed&) = delete;
    UsbTestbed& operator=(const UsbTestbed&) = delete;
    ~UsbTestbed();

    /// Plugs a device into a port, such as "1-1". Each plugging gives a new address, as the kernel
    /// does.
    SimulatedNode& plug(const std::string& port, std::uint16_t vendorId, std::uint16_t productId,
                        WireHandler handler = {});
    void unplug(const std::string& port);

    /// Makes two plugged devices the halves of one, as far as sysfs tells: each is what the peer of
    /// the other's port has.
    void join(const std::string& port, const std::string& otherPort,
              const std::string& deviceClass);

    /// The event of the arrival once more, without an arrival.
    void repeatArrival(const std::string& port);

    std::string nodePath(const std::string& port) const;
    std::string rootFolder() const; ///< where all of it really lies

private:
    struct Plugged {
        SimulatedNode* node;
        std::string nodePath;
        std::string systemPath;
    };

    UMockdevTestbed* m_testbed;
    std::vector<std::unique_ptr<SimulatedNode>> m_nodes; // those of the past too: open files still
                                                         // reach them
    std::map<std::string, Plugged> m_plugged;
    // The handlers of these nodes stay to the end: a host that is just opening one would be cut off
    // by an abort().
    std::vector<std::string> m_left;
    unsigned m_lastAddress = 1; // 1 is the root hub's
};

} // namespace vornadel::test
