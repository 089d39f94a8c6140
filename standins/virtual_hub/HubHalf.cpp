#include "standins/virtual_hub/HubHalf.h"

#include <algorithm>
#include <utility>

namespace vornadel
{

namespace
{

constexpr std::uint8_t kDirectionIn = 0x80;
constexpr std::uint8_t kTypeMask = 0x60;
constexpr std::uint8_t kVendorType = 0x40;

// bmRequestType: direction, type and recipient.
constexpr std::uint8_t kToDevice = 0x00;
constexpr std::uint8_t kToInterface = 0x01;
constexpr std::uint8_t kToEndpoint = 0x02;
constexpr std::uint8_t kFromDevice = 0x80;
constexpr std::uint8_t kFromInterface = 0x81;
constexpr std::uint8_t kFromEndpoint = 0x82;
constexpr std::uint8_t kToHub = 0x20;
constexpr std::uint8_t kToPort = 0x23;
constexpr std::uint8_t kFromHub = 0xA0;
constexpr std::uint8_t kFromPort = 0xA3;

enum Request : std::uint8_t {
    kGetStatus = 0,
    kClearFeature = 1,
    kSetFeature = 3,
    kSetAddress = 5,
    kGetDescriptor = 6,
    kGetConfiguration = 8,
    kClearTtBuffer = 8,
    kSetConfiguration = 9,
    kResetTt = 9,
    kGetInterface = 10,
    kSetInterface = 11,
    kStopTt = 11,
    kSetHubDepth = 12,
    kGetPortErrorCount = 13,
    kSetExitLatencies = 48,
    kSetIsochronousDelay = 49,
};

constexpr std::uint16_t kSelfPowered = 0x0001;

enum Speeds : std::uint8_t { kSuper = 1, kHigh = 2, kBoth = 3 };

/// A feature of the device, its bit in the device status and the halves that have it.
struct DeviceFeature {
    std::uint16_t feature;
    std::uint16_t statusBit;
    Speeds speeds;
};
constexpr std::array<DeviceFeature, 3> kDeviceFeatures = {{
    {1, 0x0002, kHigh},   // remote wake-up
    {48, 0x0004, kSuper}, // U1
    {49, 0x0008, kSuper}, // U2
}};

/// A feature of a port and what the host may do with it.
struct PortFeature {
    std::uint16_t feature;
    Speeds settable; // 0: on neither half
    Speeds clearable;
};
constexpr Speeds kNone = static_cast<Speeds>(0);
constexpr std::uint16_t kPortLinkState = 5;
constexpr std::uint16_t kPortPower = 8;
constexpr std::array<PortFeature, 19> kPortFeatures = {{
    {1, kNone, kHigh}, // enable
    {2, kHigh, kHigh}, // suspend
    {4, kBoth, kNone}, // reset; no effect, because nothing is plugged in
    {kPortLinkState, kSuper, kNone},
    {kPortPower, kBoth, kBoth},
    {16, kNone, kBoth},   // change of connection
    {17, kNone, kHigh},   // change of enable
    {18, kNone, kHigh},   // change of suspend
    {19, kNone, kBoth},   // change of over-current
    {20, kNone, kBoth},   // change of reset
    {22, kHigh, kHigh},   // indicator
    {23, kSuper, kNone},  // U1 time-out
    {24, kSuper, kNone},  // U2 time-out
    {25, kNone, kSuper},  // change of link state
    {26, kNone, kSuper},  // change of configuration error
    {27, kSuper, kNone},  // remote wake mask
    {28, kSuper, kNone},  // warm reset
    {29, kNone, kSuper},  // change of warm reset
    {30, kSuper, kSuper}, // link power management forced
}};

Speeds speedOf(HubSpeed half) { return half == HubSpeed::SuperSpeed ? kSuper : kHigh; }
bool includes(Speeds speeds, HubSpeed half) { return (speeds & speedOf(half)) != 0; }

} // namespace

/// One request that the hub knows.
struct HubHalf::RequestRow {
    std::uint8_t bmRequestType;
    std::uint8_t bRequest;
    Speeds speeds;
    bool (HubHalf::*answer)(const SetupPacket&, ByteBuffer&);
};

HubHalf::HubHalf(VirtualDevice device) : m_device(std::move(device)) {}

TransferResult HubHalf::control(const SetupPacket& setup, ByteView out)
{
    static constexpr std::array<RequestRow, 28> kRows = {{
        {kFromDevice, kGetDescriptor, kBoth, &HubHalf::getDescriptor},
        {kFromDevice, kGetStatus, kBoth, &HubHalf::getDeviceStatus},
        {kFromInterface, kGetStatus, kBoth, &HubHalf::getInterfaceStatus},
        {kFromEndpoint, kGetStatus, kBoth, &HubHalf::getEndpointStatus},
        {kToDevice, kSetFeature, kBoth, &HubHalf::changeDeviceFeature},
        {kToDevice, kClearFeature, kBoth, &HubHalf::changeDeviceFeature},
        {kToInterface, kSetFeature, kSuper, &HubHalf::changeInterfaceFeature},
        {kToInterface, kClearFeature, kSuper, &HubHalf::changeInterfaceFeature},
        {kToEndpoint, kSetFeature, kBoth, &HubHalf::changeEndpointFeature},
        {kToEndpoint, kClearFeature, kBoth, &HubHalf::changeEndpointFeature},
        {kFromDevice, kGetConfiguration, kBoth, &HubHalf::getConfiguration},
        {kToDevice, kSetConfiguration, kBoth, &HubHalf::setConfiguration},
        {kFromInterface, kGetInterface, kBoth, &HubHalf::getInterface},
        {kToInterface, kSetInterface, kBoth, &HubHalf::setInterface},
        {kToDevice, kSetAddress, kBoth, &HubHalf::acknowledge},
        {kToDevice, kSetExitLatencies, kSuper, &HubHalf::acknowledge},
        {kToDevice, kSetIsochronousDelay, kSuper, &HubHalf::acknowledge},
        {kFromHub, kGetDescriptor, kBoth, &HubHalf::getHubDescriptor},
        {kFromHub, kGetStatus, kBoth, &HubHalf::getHubStatus},
        {kToHub, kClearFeature, kBoth, &HubHalf::clearHubFeature},
        {kToHub, kSetHubDepth, kSuper, &HubHalf::setHubDepth},
        {kFromPort, kGetStatus, kBoth, &HubHalf::getPortStatus},
        {kFromPort, kGetPortErrorCount, kSuper, &HubHalf::getPortErrorCount},
        {kToPort, kSetFeature, kBoth, &HubHalf::setPortFeature},
        {kToPort, kClearFeature, kBoth, &HubHalf::clearPortFeature},
        {kToPort, kClearTtBuffer, kHigh, &HubHalf::acknowledge},
        {kToPort, kResetTt, kHigh, &HubHalf::acknowledge},
        {kToPort, kStopTt, kHigh, &HubHalf::acknowledge},
    }};
    if ((setup.bmRequestType & kTypeMask) == kVendorType) {
        return vendor(setup, out);
    }
    const auto* row = std::find_if(kRows.begin(), kRows.end(), [&](const RequestRow& candidate) {
        return candidate.bmRequestType == setup.bmRequestType &&
               candidate.bRequest == setup.bRequest && includes(candidate.speeds, m_device.half);
    });
    TransferResult result;
    if (row == kRows.end() || !(this->*row->answer)(setup, result.data)) {
        result.status = kTransferStalled;
        result.data.clear();
        return result;
    }
    result.data.resize(std::min<std::size_t>(result.data.size(), setup.wLength));
    const bool in = (setup.bmRequestType & kDirectionIn) != 0;
    result.moved = static_cast<std::uint32_t>(in ? result.data.size() : out.size());
    return result;
}

TransferResult HubHalf::vendor(const SetupPacket& setup, ByteView out)
{
    const bool in = (setup.bmRequestType & kDirectionIn) != 0;
    ByteBuffer stage(setup.wLength, 0);
    if (!in) {
        std::copy_n(out.begin(), std::min(out.size(), stage.size()), stage.begin());
    }
    ControlRequest request = {setup.bmRequestType, setup.bRequest, setup.wValue, setup.wIndex};
    if (in) {
        request.in = stage;
    } else {
        request.out = stage;
    }
    const std::uint32_t status = m_device.vendorRequest(request);
    TransferResult result;
    result.moved = std::min<std::uint32_t>(request.transferred, setup.wLength);
    if (status == kSimulatedNoDevice) {
        result.status = kTransferGone;
    } else if (status != 0 && !(in && status == kSimulatedShort)) {
        // A short answer to the host is no failure.
        result.status = kTransferStalled;
    }
    if (in && result.status == kTransferDone) {
        stage.resize(result.moved);
        result.data = std::move(stage);
    } else if (in) {
        result.moved = 0;
    }
    return result;
}

/// The port in the low byte of wIndex, counted from 1; null if there is none.
HubHalf::Port* HubHalf::portOf(const SetupPacket& setup)
{
    const unsigned number = setup.wIndex & 0xFF;
    return number >= 1 && number <= m_ports.size() ? &m_ports[number - 1] : nullptr;
}

bool HubHalf::getDescriptor(const SetupPacket& setup, ByteBuffer& reply)
{
    reply = standardDescriptor(m_device, static_cast<std::uint8_t>(setup.wValue >> 8),
                               static_cast<std::uint8_t>(setup.wValue & 0xFF));
    return !reply.empty();
}

bool HubHalf::getDeviceStatus(const SetupPacket& /*setup*/, ByteBuffer& reply)
{
    putLittle16(reply, kSelfPowered | m_deviceFeatures);
    return true;
}

bool HubHalf::getInterfaceStatus(const SetupPacket& setup, ByteBuffer& reply)
{
    putLittle16(reply, 0);
    return setup.wIndex == 0 && m_configuration != 0;
}

bool HubHalf::getEndpointStatus(const SetupPacket& setup, ByteBuffer& reply)
{
    const std::uint16_t endpoint = setup.wIndex & 0x8F;
    putLittle16(reply, endpoint == kStatusEndpoint && m_halted ? 1 : 0);
    return (endpoint & 0x0F) == 0 || (endpoint == kStatusEndpoint && m_configuration != 0);
}

bool HubHalf::changeDeviceFeature(const SetupPacket& setup, ByteBuffer& /*reply*/)
{
    const auto* row = std::find_if(
        kDeviceFeatures.begin(), kDeviceFeatures.end(), [&](const DeviceFeature& known) {
            return known.feature == setup.wValue && includes(known.speeds, m_device.half);
        });
    if (row == kDeviceFeatures.end()) {
        return false;
    }
    m_deviceFeatures = static_cast<std::uint16_t>(setup.bRequest == kSetFeature
                                                      ? m_deviceFeatures | row->statusBit
                                                      : m_deviceFeatures & ~row->statusBit);
    return true;
}

/// Function suspend, the only feature of an interface; no suspending is simulated.
bool HubHalf::changeInterfaceFeature(const SetupPacket& setup, ByteBuffer& /*reply*/)
{
    return setup.wValue == 0 && (setup.wIndex & 0xFF) == 0 && m_configuration != 0;
}

/// Halt, the only feature of an endpoint.
bool HubHalf::changeEndpointFeature(const SetupPacket& setup, ByteBuffer& /*reply*/)
{
    if (setup.wValue != 0 || setup.wIndex != kStatusEndpoint || m_configuration == 0) {
        return false;
    }
    m_halted = setup.bRequest == kSetFeature;
    return true;
}

bool HubHalf::getConfiguration(const SetupPacket& /*setup*/, ByteBuffer& reply)
{
    reply.push_back(m_configuration);
    return true;
}

bool HubHalf::setConfiguration(const SetupPacket& setup, ByteBuffer& /*reply*/)
{
    if (setup.wValue > kConfigurationValue) {
        return false;
    }
    m_configuration = static_cast<std::uint8_t>(setup.wValue);
    m_halted = false;
    m_ports = {}; // a newly configured hub has no power on its ports
    return true;
}

bool HubHalf::getInterface(const SetupPacket& setup, ByteBuffer& reply)
{
    reply.push_back(0);
    return setup.wIndex == 0 && m_configuration != 0;
}

bool HubHalf::setInterface(const SetupPacket& setup, ByteBuffer& /*reply*/)
{
    if (setup.wIndex != 0 || setup.wValue != 0 || m_configuration == 0) {
        return false;
    }
    m_halted = false;
    return true;
}

bool HubHalf::acknowledge(const SetupPacket& /*setup*/, ByteBuffer& /*reply*/) { return true; }

bool HubHalf::getHubDescriptor(const SetupPacket& setup, ByteBuffer& reply)
{
    reply = hubDescriptor(m_device.half, static_cast<std::uint8_t>(setup.wValue >> 8));
    return !reply.empty();
}

/// Power and over-current are in order, and nothing has changed.
bool HubHalf::getHubStatus(const SetupPacket& /*setup*/, ByteBuffer& reply)
{
    reply.assign(4, 0);
    return true;
}

/// The changes of local power and of over-current.
bool HubHalf::clearHubFeature(const SetupPacket& setup, ByteBuffer& /*reply*/)
{
    return setup.wValue <= 1;
}

bool HubHalf::setHubDepth(const SetupPacket& setup, ByteBuffer& /*reply*/)
{
    constexpr std::uint16_t kDeepest = 4;
    return setup.wValue <= kDeepest;
}

bool HubHalf::getPortStatus(const SetupPacket& setup, ByteBuffer& reply)
{
    constexpr std::uint16_t kHighSpeedPower = 0x0100;
    constexpr std::uint16_t kSuperSpeedPower = 0x0200;
    constexpr std::uint16_t kLinkDisabled = 4 << 5;
    constexpr std::uint16_t kLinkSearching = 5 << 5;
    const Port* const port = portOf(setup);
    if (port == nullptr || setup.wValue != 0) {
        return false;
    }
    std::uint16_t status = 0;
    if (m_device.half == HubSpeed::HighSpeed) {
        status = port->powered ? kHighSpeedPower : 0;
    } else if (port->powered) {
        status = kSuperSpeedPower | (port->disabled ? kLinkDisabled : kLinkSearching);
    } else {
        status = kLinkDisabled;
    }
    putLittle16(reply, status);
    putLittle16(reply, 0); // no change
    return true;
}

bool HubHalf::getPortErrorCount(const SetupPacket& setup, ByteBuffer& reply)
{
    putLittle16(reply, 0);
    return portOf(setup) != nullptr;
}

bool HubHalf::setPortFeature(const SetupPacket& setup, ByteBuffer& /*reply*/)
{
    constexpr unsigned kDisabled = 4;
    Port* const port = portOf(setup);
    const bool known =
        std::any_of(kPortFeatures.begin(), kPortFeatures.end(), [&](const PortFeature& row) {
            return row.feature == setup.wValue && includes(row.settable, m_device.half);
        });
    if (port == nullptr || !known) {
        return false;
    }
    if (setup.wValue == kPortPower) {
        port->powered = true;
    } else if (setup.wValue == kPortLinkState) {
        port->disabled = (setup.wIndex >> 8) == kDisabled;
    }
    return true;
}

bool HubHalf::clearPortFeature(const SetupPacket& setup, ByteBuffer& /*reply*/)
{
    Port* const port = portOf(setup);
    const bool known =
        std::any_of(kPortFeatures.begin(), kPortFeatures.end(), [&](const PortFeature& row) {
            return row.feature == setup.wValue && includes(row.clearable, m_device.half);
        });
    if (port == nullptr || !known) {
        return false;
    }
    if (setup.wValue == kPortPower) {
        *port = Port();
    }
    return true;
}

} // namespace vornadel
