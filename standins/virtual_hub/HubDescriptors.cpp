#include "standins/virtual_hub/HubDescriptors.h"

#include <array>
#include <cstdio>
#include <string>
#include <string_view>

namespace vornadel
{

namespace
{

constexpr std::uint8_t kHubClass = 9;
constexpr std::uint16_t kUsEnglish = 0x0409;
constexpr std::uint16_t kUsb30 = 0x0300;
constexpr std::uint16_t kUsb21 = 0x0210; // the lowest version with a binary object store
constexpr std::uint16_t kDeviceRelease = 0x0100;

std::uint8_t typeByte(DescriptorType type) { return static_cast<std::uint8_t>(type); }

void append(ByteBuffer& to, const ByteBuffer& bytes)
{
    to.insert(to.end(), bytes.begin(), bytes.end());
}

std::uint16_t usbVersion(HubSpeed half) { return half == HubSpeed::SuperSpeed ? kUsb30 : kUsb21; }

/// 3: SuperSpeed hub; 1: high-speed hub with a single transaction translator.
std::uint8_t hubProtocol(HubSpeed half) { return half == HubSpeed::SuperSpeed ? 3 : 1; }

/// The value of bMaxPacketSize0: an exponent of 2 at SuperSpeed.
std::uint8_t controlPacketSize(HubSpeed half) { return half == HubSpeed::SuperSpeed ? 9 : 64; }

ByteBuffer deviceDescriptor(const VirtualDevice& device)
{
    ByteBuffer bytes = {18, typeByte(DescriptorType::Device)};
    putLittle16(bytes, usbVersion(device.half));
    append(bytes, {kHubClass, 0, hubProtocol(device.half), controlPacketSize(device.half)});
    putLittle16(bytes, device.vendorId);
    putLittle16(bytes, device.productId);
    putLittle16(bytes, kDeviceRelease);
    append(bytes, {1, 2, 3, 1}); // manufacturer, product, serial number; one configuration
    return bytes;
}

/// The endpoint with the port changes. Intervals: 2^(n-1) micro-frames at high speed and above,
/// milliseconds at full speed.
ByteBuffer statusEndpoint(HubSpeed half, bool fullSpeed)
{
    ByteBuffer bytes = {7, typeByte(DescriptorType::Endpoint), kStatusEndpoint};
    if (half == HubSpeed::SuperSpeed) {
        bytes.push_back(0x13); // interrupt, used for notifications
        putLittle16(bytes, 2);
        bytes.push_back(8);
        append(bytes, {6, typeByte(DescriptorType::EndpointCompanion), 0, 0});
        putLittle16(bytes, 2);
        return bytes;
    }
    bytes.push_back(0x03);
    putLittle16(bytes, 1);
    bytes.push_back(fullSpeed ? 255 : 12);
    return bytes;
}

ByteBuffer configuration(HubSpeed half, DescriptorType type)
{
    const bool fullSpeed = type == DescriptorType::OtherSpeedConfiguration;
    // Self-powered, may wake the host, draws no current.
    ByteBuffer rest = {1, kConfigurationValue, 0, 0xE0, 0};
    append(rest, {9, typeByte(DescriptorType::Interface), 0, 0, 1, kHubClass, 0, 0, 0});
    append(rest, statusEndpoint(half, fullSpeed));
    ByteBuffer bytes = {9, typeByte(type)};
    putLittle16(bytes, static_cast<std::uint32_t>(bytes.size() + 2 + rest.size()));
    append(bytes, rest);
    return bytes;
}

ByteBuffer deviceQualifier()
{
    ByteBuffer bytes = {10, typeByte(DescriptorType::DeviceQualifier)};
    putLittle16(bytes, kUsb21);
    append(bytes, {kHubClass, 0, 0, 64, 1, 0});
    return bytes;
}

/// The product ids of both halves, SuperSpeed first.
std::array<std::uint16_t, kHubSpeedCount> productIds(const VirtualDevice& device)
{
    if (device.half == HubSpeed::SuperSpeed) {
        return {device.productId, device.otherProductId};
    }
    return {device.otherProductId, device.productId};
}

/// Identifies the hub: the same on both halves, different for each hub of a program. Hubs of two
/// programs differ if their product ids do.
ByteBuffer containerId(const VirtualDevice& device)
{
    ByteBuffer bytes = {0x76, 0x6F, 0x72, 0x6E, 0x61, 0x64, 0x45, 0x4C, 0x80, 0x00, 0x00};
    for (const std::uint16_t id : productIds(device)) {
        putLittle16(bytes, id);
    }
    bytes.push_back(static_cast<std::uint8_t>(device.hub));
    return bytes;
}

ByteBuffer binaryObjectStore(const VirtualDevice& device)
{
    const std::uint8_t capability = typeByte(DescriptorType::DeviceCapability);
    ByteBuffer capabilities = {7, capability, 0x02, 0x02,
                               0, 0,          0}; // USB 2.0 extension: link power management
    append(capabilities, {10, capability, 0x03, 0});
    putLittle16(capabilities, 0x000E); // full, high and super speed
    capabilities.push_back(1);         // all functions work at full speed and above
    capabilities.push_back(10);        // microseconds out of U1
    putLittle16(capabilities, 2047);   // microseconds out of U2
    append(capabilities, {20, capability, 0x04, 0});
    append(capabilities, containerId(device));
    ByteBuffer bytes = {5, typeByte(DescriptorType::BinaryObjectStore)};
    putLittle16(bytes, static_cast<std::uint32_t>(5 + capabilities.size()));
    bytes.push_back(3);
    append(bytes, capabilities);
    return bytes;
}

ByteBuffer textDescriptor(std::string_view text)
{
    ByteBuffer bytes = {static_cast<std::uint8_t>(2 + 2 * text.size()),
                        typeByte(DescriptorType::String)};
    for (const char character : text) {
        putLittle16(bytes, static_cast<std::uint8_t>(character));
    }
    return bytes;
}

ByteBuffer stringDescriptor(const VirtualDevice& device, std::uint8_t index)
{
    switch (index) {
    case 0: {
        ByteBuffer bytes = {4, typeByte(DescriptorType::String)};
        putLittle16(bytes, kUsEnglish);
        return bytes;
    }
    case 1:
        return textDescriptor("Vornadel");
    case 2:
        return textDescriptor(device.half == HubSpeed::SuperSpeed ? "Virtual hub, SuperSpeed"
                                                                  : "Virtual hub, high speed");
    case 3:
        return textDescriptor(device.serialNumber);
    default:
        return {};
    }
}

} // namespace

ByteBuffer standardDescriptor(const VirtualDevice& device, std::uint8_t type, std::uint8_t index)
{
    const auto asked = static_cast<DescriptorType>(type);
    if (asked == DescriptorType::String) {
        return stringDescriptor(device, index);
    }
    if (index != 0) {
        return {};
    }
    switch (asked) {
    case DescriptorType::Device:
        return deviceDescriptor(device);
    case DescriptorType::Configuration:
        return configuration(device.half, asked);
    case DescriptorType::BinaryObjectStore:
        return binaryObjectStore(device);
    case DescriptorType::DeviceQualifier:
        return device.half == HubSpeed::HighSpeed ? deviceQualifier() : ByteBuffer();
    case DescriptorType::OtherSpeedConfiguration:
        return device.half == HubSpeed::HighSpeed ? configuration(device.half, asked)
                                                  : ByteBuffer();
    default:
        return {};
    }
}

ByteBuffer hubDescriptor(HubSpeed half, std::uint8_t type)
{
    constexpr std::uint16_t kPowerAndOverCurrentPerPort = 0x0009;
    constexpr std::uint8_t kPowerGood = 50; // in 2 ms
    const DescriptorType own =
        half == HubSpeed::SuperSpeed ? DescriptorType::SuperSpeedHub : DescriptorType::HighSpeedHub;
    if (type != typeByte(own)) {
        return {};
    }
    ByteBuffer bytes = {static_cast<std::uint8_t>(half == HubSpeed::SuperSpeed ? 12 : 9), type,
                        static_cast<std::uint8_t>(kDownstreamPorts)};
    putLittle16(bytes, kPowerAndOverCurrentPerPort);
    append(bytes, {kPowerGood, 0});
    if (half == HubSpeed::SuperSpeed) {
        bytes.push_back(4);      // packet header decode latency in 0.1 microseconds
        putLittle16(bytes, 100); // forwarding delay in nanoseconds
        putLittle16(bytes, 0);   // every device can be removed
    } else {
        append(bytes, {0, 0xFF}); // every device can be removed; old hosts want the byte of ones
    }
    return bytes;
}

} // namespace vornadel
