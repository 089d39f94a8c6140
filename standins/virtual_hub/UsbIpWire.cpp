#include "standins/virtual_hub/UsbIpWire.h"

#include "standins/virtual_hub/HubDescriptors.h"

#include <algorithm>

namespace vornadel
{

namespace
{

constexpr std::uint32_t kSubmit = 1;
constexpr std::uint32_t kUnlink = 2;
constexpr std::uint32_t kSubmitReply = 3;
constexpr std::uint32_t kUnlinkReply = 4;

constexpr std::uint16_t kProtocolVersion = 0x0111;
constexpr std::uint16_t kListReply = 0x0005;
constexpr std::uint16_t kImportReply = 0x0003;
constexpr std::size_t kPathSize = 256;

constexpr std::uint32_t kNotIsochronous = 0xFFFFFFFF; // number of packets; Linux also writes 0
constexpr std::uint32_t kMostBytesOut = 0xFFFF;       // the limit of wLength

constexpr std::size_t kReplyHeaderSize = 24;

void writeReplyHeader(ByteBuffer& to, std::uint32_t command, std::uint32_t sequence,
                      std::int32_t status)
{
    putBig32(to, command);
    putBig32(to, sequence);
    to.resize(to.size() + 12, 0); // device, direction and endpoint: unused in replies
    putBig32(to, static_cast<std::uint32_t>(status));
}

void writeOperationHeader(ByteBuffer& to, std::uint16_t code, OperationStatus status)
{
    putBig16(to, kProtocolVersion);
    putBig16(to, code);
    putBig32(to, static_cast<std::uint32_t>(status));
}

void writeDeviceRecord(ByteBuffer& to, const ExportedDevice& exported)
{
    const VirtualDevice& device = exported.device;
    const ByteBuffer descriptor =
        standardDescriptor(device, static_cast<std::uint8_t>(DescriptorType::Device), 0);
    putText(to, "/vornadel-virtual-hub/" + exported.busId, kPathSize);
    putText(to, exported.busId, kBusIdSize);
    putBig32(to, deviceNumber(device) >> 16);
    putBig32(to, deviceNumber(device) & 0xFFFF);
    putBig32(to, speedNumber(device.half));
    putBig16(to, device.vendorId);
    putBig16(to, device.productId);
    putBig16(to, little16(descriptor, 12)); // release
    to.insert(to.end(), descriptor.begin() + 4,
              descriptor.begin() + 7); // class, subclass, protocol
    to.insert(to.end(), {0, 1, 1});    // not configured yet; one configuration with one interface
}

} // namespace

std::optional<UrbRequest> readUrbHeader(ByteView bytes)
{
    const std::uint32_t command = big32(bytes, 0);
    const std::uint32_t direction = big32(bytes, 12);
    const std::uint32_t endpoint = big32(bytes, 16);
    if ((command != kSubmit && command != kUnlink) || direction > 1 || endpoint > 15) {
        return std::nullopt;
    }
    UrbRequest request;
    request.unlink = command == kUnlink;
    request.sequence = big32(bytes, 4);
    request.device = big32(bytes, 8);
    request.in = direction == 1;
    request.endpoint = static_cast<std::uint8_t>(endpoint);
    if (request.unlink) {
        request.unlinked = big32(bytes, 20);
        return request;
    }
    request.length = big32(bytes, 24);
    const std::uint32_t packets = big32(bytes, 32);
    if ((packets != 0 && packets != kNotIsochronous) ||
        (!request.in && request.length > kMostBytesOut)) {
        return std::nullopt;
    }
    request.setup = {bytes[40], bytes[41], little16(bytes, 42), little16(bytes, 44),
                     little16(bytes, 46)};
    return request;
}

void writeUrbReply(ByteBuffer& to, std::uint32_t sequence, const TransferResult& result)
{
    writeReplyHeader(to, kSubmitReply, sequence, result.status);
    putBig32(to, result.moved);
    to.resize(to.size() + kUrbHeaderSize - kReplyHeaderSize - 4, 0);
    to.insert(to.end(), result.data.begin(), result.data.end());
}

void writeUnlinkReply(ByteBuffer& to, std::uint32_t sequence, std::int32_t status)
{
    writeReplyHeader(to, kUnlinkReply, sequence, status);
    to.resize(to.size() + kUrbHeaderSize - kReplyHeaderSize, 0);
}

std::optional<Operation> readOperation(ByteView bytes)
{
    const auto code = static_cast<Operation>(big16(bytes, 2));
    if (big16(bytes, 0) != kProtocolVersion ||
        (code != Operation::ListDevices && code != Operation::Import)) {
        return std::nullopt;
    }
    return code;
}

void writeDeviceList(ByteBuffer& to, const std::vector<ExportedDevice>& devices)
{
    writeOperationHeader(to, kListReply, OperationStatus::Ok);
    putBig32(to, static_cast<std::uint32_t>(devices.size()));
    for (const ExportedDevice& exported : devices) {
        writeDeviceRecord(to, exported);
        const ByteBuffer configuration = standardDescriptor(
            exported.device, static_cast<std::uint8_t>(DescriptorType::Configuration), 0);
        to.insert(to.end(), configuration.begin() + 14,
                  configuration.begin() + 17); // class of the interface
        to.push_back(0);
    }
}

void writeImportReply(ByteBuffer& to, OperationStatus status, const ExportedDevice* device)
{
    writeOperationHeader(to, kImportReply, status);
    if (status == OperationStatus::Ok && device != nullptr) {
        writeDeviceRecord(to, *device);
    }
}

} // namespace vornadel
