#pragma once

#include "standins/virtual_hub/ByteOrder.h"
#include "standins/virtual_hub/HubDescriptors.h"
#include "standins/virtual_hub/VirtualDevice.h"

#include <array>
#include <cstdint>

namespace vornadel
{

/// Statuses of a transfer: Linux error numbers, which USB/IP uses on the wire.
inline constexpr std::int32_t kTransferDone = 0;
inline constexpr std::int32_t kTransferStalled = -32;   ///< EPIPE
inline constexpr std::int32_t kTransferUnlinked = -104; ///< ECONNRESET
inline constexpr std::int32_t kTransferGone = -108;     ///< ESHUTDOWN: the device has left

/// The first eight bytes of a control transfer.
struct SetupPacket {
    std::uint8_t bmRequestType = 0;
    std::uint8_t bRequest = 0;
    std::uint16_t wValue = 0;
    std::uint16_t wIndex = 0;
    std::uint16_t wLength = 0;
};

/// How a transfer ended. `data` is what goes to the host; `moved` counts it, or the bytes taken
/// from the host.
struct TransferResult {
    std::int32_t status = kTransferDone;
    std::uint32_t moved = 0;
    ByteBuffer data;
};

/// One half of the hub as a USB device of hub class, with nothing plugged into its ports. It
/// answers standard and hub-class requests itself and passes vendor requests on. Not thread-safe.
class HubHalf
{
public:
    explicit HubHalf(VirtualDevice device);

    /// One transfer on the default pipe. `out` is the data stage of a request to the device,
    /// wLength bytes.
    TransferResult control(const SetupPacket& setup, ByteView out);

    /// Whether a transfer on the status endpoint would be refused. Otherwise it waits for a change
    /// that never comes.
    bool statusEndpointHalted() const { return m_halted; }

    const VirtualDevice& device() const { return m_device; }

private:
    struct RequestRow;
    struct Port {
        bool powered = false;
        bool disabled = false; // SuperSpeed: the host has switched the link off
    };

    TransferResult vendor(const SetupPacket& setup, ByteView out);
    Port* portOf(const SetupPacket& setup);

    // Each answers one request; `reply` is the data stage to the host. False: refused.
    bool getDescriptor(const SetupPacket& setup, ByteBuffer& reply);
    bool getDeviceStatus(const SetupPacket& setup, ByteBuffer& reply);
    bool getInterfaceStatus(const SetupPacket& setup, ByteBuffer& reply);
    bool getEndpointStatus(const SetupPacket& setup, ByteBuffer& reply);
    bool changeDeviceFeature(const SetupPacket& setup, ByteBuffer& reply);
    bool changeInterfaceFeature(const SetupPacket& setup, ByteBuffer& reply);
    bool changeEndpointFeature(const SetupPacket& setup, ByteBuffer& reply);
    bool getConfiguration(const SetupPacket& setup, ByteBuffer& reply);
    bool setConfiguration(const SetupPacket& setup, ByteBuffer& reply);
    bool getInterface(const SetupPacket& setup, ByteBuffer& reply);
    bool setInterface(const SetupPacket& setup, ByteBuffer& reply);
    bool acknowledge(const SetupPacket& setup, ByteBuffer& reply);
    bool getHubDescriptor(const SetupPacket& setup, ByteBuffer& reply);
    bool getHubStatus(const SetupPacket& setup, ByteBuffer& reply);
    bool clearHubFeature(const SetupPacket& setup, ByteBuffer& reply);
    bool setHubDepth(const SetupPacket& setup, ByteBuffer& reply);
    bool getPortStatus(const SetupPacket& setup, ByteBuffer& reply);
    bool getPortErrorCount(const SetupPacket& setup, ByteBuffer& reply);
    bool setPortFeature(const SetupPacket& setup, ByteBuffer& reply);
    bool clearPortFeature(const SetupPacket& setup, ByteBuffer& reply);

    const VirtualDevice m_device;
    std::array<Port, kDownstreamPorts> m_ports{};
    std::uint8_t m_configuration = 0;
    std::uint16_t m_deviceFeatures = 0; // bits of the device status that the host may change
    bool m_halted = false;
};

} // namespace vornadel
